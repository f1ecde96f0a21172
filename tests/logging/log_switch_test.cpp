#include "logging/log_stream.h"
#include "logging/log_switch.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>
#include <spdlog/logger.h>

#include <string>

namespace quill {
namespace {

class LogSwitch : public testing::Test
{
protected:
    static void set_level(spdlog::level::level_enum level) { global_logger().logger->set_level(level); }

    // A piece that counts its evaluations.
    const char* piece()
    {
        ++evaluations_;
        return "piece";
    }

    test::log_capture capture; // logs every level
    int evaluations_ = 0;
};

TEST_F(LogSwitch, FollowsTheLevelOfTheCurrentLogger)
{
    set_level(spdlog::level::info);
    EXPECT_FALSE(is_logged(log_level::debug));
    EXPECT_TRUE(is_logged(log_level::info));
    EXPECT_TRUE(is_logged(log_level::critical));
    set_level(spdlog::level::off);
    EXPECT_FALSE(is_logged(log_level::critical));
    {
        const test::log_capture another;
        EXPECT_TRUE(is_logged(log_level::trace));
    }
    EXPECT_FALSE(is_logged(log_level::critical));
}

TEST_F(LogSwitch, ADisabledStatementEvaluatesNothing)
{
    set_level(spdlog::level::info);
    QUILL_LOG(log_level::debug) << piece() << piece();
    EXPECT_EQ(evaluations_, 0);
    EXPECT_TRUE(capture.lines().empty());
    QUILL_LOG(log_level::info) << piece() << 7;
    EXPECT_EQ(evaluations_, 1);
    EXPECT_EQ(capture.lines(), std::vector<std::string>{"info: piece7"});
}

TEST_F(LogSwitch, ALineIsOneStatement)
{
    set_level(spdlog::level::off);
    bool went_else = false;
    if (evaluations_ == 0)
        QUILL_LOG(log_level::debug) << piece();
    else
        went_else = true;
    EXPECT_FALSE(went_else);
}

TEST_F(LogSwitch, NothingIsLoggedAfterTheLoggersDestruction)
{
    follow_level_of(nullptr);
    EXPECT_FALSE(is_logged(log_level::critical));
    EXPECT_FALSE(is_logged(log_level::off));
    QUILL_LOG(log_level::critical) << piece();
    EXPECT_EQ(evaluations_, 0);
    follow_level_of(global_logger().logger.get());
}

} // namespace
} // namespace quill
