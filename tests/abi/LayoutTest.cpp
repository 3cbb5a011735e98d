// Bases and fields of the library's objects, in order and without a gap that could hide another field. Compiled without
// access control, to reach the fields.
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "src/CommunicationsService.h"
#include "src/CommunicationsServiceEventProxy.h"
#include "src/CommunicationsServiceInvoker.h"

namespace {

struct Part
{
    char const* name;
    std::size_t offset;
    std::size_t size;
    std::size_t alignment;
};

template <class Object, class Member>
std::size_t offsetIn(Object const& object, Member const& member)
{
    return static_cast<std::size_t>(reinterpret_cast<char const*>(&member) - reinterpret_cast<char const*>(&object));
}

#define FIELD(object, name)                                                                                            \
    Part                                                                                                               \
    {                                                                                                                  \
        #name, offsetIn(object, (object).name), sizeof((object).name), alignof(decltype((object).name))                \
    }

std::size_t alignedUp(std::size_t offset, std::size_t alignment)
{
    return (offset + alignment - 1) / alignment * alignment;
}

// Checks that the parts follow each other from an offset to the end of the object.
void expectGapless(std::size_t begin, std::vector<Part> const& parts, std::size_t objectSize)
{
    std::size_t end = begin;
    for (auto const& part : parts) {
        EXPECT_EQ(part.offset, alignedUp(end, part.alignment)) << part.name;
        end = part.offset + part.size;
    }
    EXPECT_EQ(objectSize, alignedUp(end, alignof(void*)));
}

template <class Base, class Object>
std::size_t baseOffset(Object const& object)
{
    return offsetIn(object, static_cast<Base const&>(object));
}

constexpr std::size_t kWord = sizeof(void*);

TEST(LayoutTest, CommunicationsService_HasItsBasesInOrder)
{
    CommunicationsService const service;

    EXPECT_EQ(baseOffset<Service>(service), 0 * kWord);
    EXPECT_EQ(baseOffset<Executable>(service), 0 * kWord);
    EXPECT_EQ(baseOffset<Threadable>(service), 1 * kWord);
    EXPECT_EQ(baseOffset<CommunicationsServiceIfc>(service), 2 * kWord);
    EXPECT_EQ(baseOffset<MediaRecordingServiceIfc>(service), 3 * kWord);
    EXPECT_EQ(baseOffset<MgmtAgentIfc>(service), 4 * kWord);
    EXPECT_EQ(baseOffset<TeamServiceIfc>(service), 5 * kWord);
    EXPECT_EQ(baseOffset<physicalEventObserver>(service), 6 * kWord);
    EXPECT_EQ(baseOffset<functionalEventObserver>(service), 7 * kWord);
}

TEST(LayoutTest, CommunicationsService_HasItsFieldsInOrder)
{
    CommunicationsService const service;

    expectGapless(8 * kWord,
                  {
                      FIELD(service, context_),
                      FIELD(service, mediaRecordingService_),
                      FIELD(service, sipConfigManager_),
                      FIELD(service, publicationLock_),
                      FIELD(service, auditoryDevice_),
                      FIELD(service, localMgmt_),
                      FIELD(service, digitAnalysis_),
                      FIELD(service, physicalInterface_),
                      FIELD(service, certificateMgmt_),
                      FIELD(service, publicationInProgress_),
                      FIELD(service, teamServiceLock_),
                      FIELD(service, subscriptionTimerId_),
                  },
                  sizeof(service));
}

TEST(LayoutTest, CommunicationsService_StartsWithNothing)
{
    CommunicationsService const service;

    EXPECT_EQ(service.context_, nullptr);
    EXPECT_EQ(service.mediaRecordingService_, nullptr);
    EXPECT_EQ(service.sipConfigManager_, nullptr);
    EXPECT_EQ(service.auditoryDevice_, nullptr);
    EXPECT_EQ(service.localMgmt_, nullptr);
    EXPECT_EQ(service.digitAnalysis_, nullptr);
    EXPECT_EQ(service.physicalInterface_, nullptr);
    EXPECT_EQ(service.certificateMgmt_, nullptr);
    EXPECT_FALSE(service.publicationInProgress_);
    EXPECT_EQ(service.subscriptionTimerId_, 0);
}

TEST(LayoutTest, CommunicationsService_FieldsAreAsWideAsTheyWere)
{
    using Object = CommunicationsService;
    static_assert(std::is_same_v<decltype(Object::context_), Context*>);
    static_assert(std::is_same_v<decltype(Object::mediaRecordingService_), MediaRecordingService*>);
    static_assert(sizeof(Object::sipConfigManager_) == kWord);
    static_assert(sizeof(Object::publicationInProgress_) == sizeof(bool));
    static_assert(sizeof(Object::subscriptionTimerId_) == sizeof(int));
    static_assert(std::is_final_v<Object>);
    static_assert(std::is_same_v<Context, SvcRTEContext> && std::is_base_of_v<FrameworkContext, SvcRTEContext>);
}

TEST(LayoutTest, EventProxy_HasBasesAndFieldsInOrder)
{
    CommunicationsServiceEventProxy const proxy;

    EXPECT_EQ(baseOffset<Proxy>(proxy), 0 * kWord);
    EXPECT_EQ(baseOffset<Executable>(proxy), 0 * kWord);
    EXPECT_EQ(baseOffset<CommunicationsServiceEventIfc>(proxy), 1 * kWord);
    expectGapless(2 * kWord, {FIELD(proxy, request_), FIELD(proxy, callBackChan_)}, sizeof(proxy));
}

TEST(LayoutTest, Invoker_HoldsItsContextAlone)
{
    CommunicationsServiceInvoker const invoker;

    EXPECT_EQ(baseOffset<Invoker>(invoker), 0 * kWord);
    expectGapless(1 * kWord, {FIELD(invoker, context_)}, sizeof(invoker));
}

TEST(LayoutTest, RecordsThatCrossTheEdge_HaveTheirLayout)
{
    sfiCallInfo const info{};
    EXPECT_EQ(offsetIn(info, info.lineID), 0U);
    EXPECT_EQ(offsetIn(info, info.primary), 4U);
    EXPECT_EQ(offsetIn(info, info.callID), 8U);
    EXPECT_EQ(offsetIn(info, info.appearanceIndex), 12U);
    static_assert(std::is_same_v<decltype(info.lineID), std::uint8_t const> || sizeof(info.lineID) == 1);
    static_assert(std::is_signed_v<decltype(sfiCallInfo::callID)> && sizeof(sfiCallInfo::callID) == 4);

    sfiReplacesDisplay const display{};
    EXPECT_EQ(offsetIn(display, display.calledName), 288U);
    EXPECT_EQ(offsetIn(display, display.called), 353U);
    EXPECT_EQ(offsetIn(display, display.callingName), 418U);
    EXPECT_EQ(offsetIn(display, display.calling), 483U);
}

}  // namespace
