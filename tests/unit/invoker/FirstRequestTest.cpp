// The invoker remembers the type of the first executable in a process, so this test has a process of its own.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RecordedResponse.h"
#include "src/CommunicationsServiceInvoker.h"
#include "tests/doubles/MockCommunicationsService.h"
#include "tests/doubles/MockExecutable.h"

using testing::ElementsAre;
using testing::Return;
using testing::StrictMock;

namespace {
TEST(FirstRequest, ToAnExecutableThatIsNoService_DoesNotHinderLaterOnes)
{
    std::string const request = "<Method>Activate</Method>";
    auto const length = static_cast<int>(request.size());
    StrictMock<MockExecutable> other;
    StrictMock<MockCommunicationsService> service;
    RecordedResponse response;
    CommunicationsServiceInvoker invoker;
    EXPECT_CALL(service, activate()).Times(2).WillRepeatedly(Return(sfiSuccess));

    invoker.handleMessage(&other, request.c_str(), length, &response);
    invoker.handleMessage(&service, request.c_str(), length, &response);
    invoker.handleMessage(&other, request.c_str(), length, &response);
    invoker.handleMessage(&service, request.c_str(), length, &response);

    EXPECT_THAT(response.told, ElementsAre("answer sfiFailure", "finish", "answer sfiSuccess", "finish",
                                           "answer sfiFailure", "finish", "answer sfiSuccess", "finish"));
}
}  // namespace
