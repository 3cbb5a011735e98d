#include "telephone/physical/LampBoard.h"

#include <gtest/gtest.h>

#include "telephone/base/Touched.h"

namespace telephone {
namespace {

using Names = std::vector<std::string>;

Configuration desk()
{
    Configuration configuration;
    configuration.keys = {{1, "line", "4711", "", false}, {2, "hold", "", "", false}};
    return configuration;
}

TEST(LampBoardTest, LampModes_AreThoseOfKeysAndOfNumberedLamps)
{
    EXPECT_EQ(lampModes(), (Names{"line steady",           "dss steady",           "blf steady",
                                  "forwarding steady",     "dnd steady",           "mute steady",
                                  "headset steady",        "messages steady",      "toggle steady",
                                  "transfer steady",       "Hold steady",          "SecondAlert steady",
                                  "line flashing",         "dss flashing",         "blf flashing",
                                  "Hold flashing",         "SecondAlert flashing", "line fluttering",
                                  "dss fluttering",        "blf fluttering",       "Hold fluttering",
                                  "SecondAlert fluttering"}));
}

TEST(LampBoardTest, LampThatIsLit_IsTouchedWithItsMode)
{
    KeyLayout const layout{desk()};
    LampBoard board{layout};
    keepTouched();

    board.setKey(1, {PhysDefs::lampFlashing, PhysDefs::lampGreen});
    board.setKey(1, {});
    board.setKey(2, {PhysDefs::lampSteady, PhysDefs::lampGreen});
    ASSERT_TRUE(board.setNumbered(PhysDefs::kLampSecondAlert, {PhysDefs::lampFluttering, PhysDefs::lampAmber}));

    EXPECT_EQ(touchedNames(Touched::kLamp),
              (std::set<std::string>{"line flashing", "Hold steady", "SecondAlert fluttering"}));
}

}  // namespace
}  // namespace telephone
