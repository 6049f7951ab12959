/*
 * Process services: the ways to end a process, the exit list, the abort flag, tools and time.
 */
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <ostrum/bf.h>
#include <ostrum/errmsg.h>
#include <ostrum/sm.h>
#include <ostrum/tid.h>
#include <ostrum/tim.h>
#include <string>
#include <unistd.h>

namespace
{

void say(int32_t signalled, intptr_t argument)
{
    std::fprintf(stderr, "<%d:%d>", static_cast<int>(signalled), static_cast<int>(argument));
}

void drop_next(int32_t, intptr_t)
{
    SM_DelExit(say, 2);
}

void fill_exit_list()
{
    BF_Initialise(); // also sets the exit list up
    SM_AtExit(say, 1);
    SM_AtExit(say, 2);
    SM_AtExit(say, 3);
    if (SM_DelExit(say, 2) != 1 || SM_DelExit(say, 2) != 0) std::abort();
}

TEST(ProcessDeathTest, FatalErrorRunsTheListNewestFirst)
{
    EXPECT_EXIT(
        {
            fill_exit_list();
            SM_FatalError("no more");
        },
        testing::ExitedWithCode(1), "^\n\\*\\* FATAL ERROR \\*\\*\nno more\n<0:3><0:1>$");
}

TEST(ProcessDeathTest, SignalsRunTheListAndStillEndTheProcess)
{
    for (const int signal_number : { SIGABRT, SIGFPE, SIGILL, SIGINT, SIGSEGV, SIGTERM }) {
        EXPECT_EXIT(
            {
                fill_exit_list();
                std::raise(signal_number);
            },
            testing::KilledBySignal(signal_number), "^<1:3><1:1>$");
    }
}

TEST(ProcessDeathTest, ExceptionAborts)
{
    EXPECT_EXIT(
        {
            dup2(STDERR_FILENO, STDOUT_FILENO);
            fill_exit_list();
            SM_Exception("odd");
        },
        testing::KilledBySignal(SIGABRT), "\nProgram Exception : odd\n<1:3><1:1>$");
}

void abort_again(int32_t, intptr_t)
{
    std::fputs("again", stderr);
    std::abort();
}

TEST(ProcessDeathTest, ExitFunctionsMayFailOrDeleteEntries)
{
    EXPECT_EXIT(
        {
            SM_Initialise();
            SM_AtExit(abort_again, 0);
            std::abort();
        },
        testing::KilledBySignal(SIGABRT), "^again$");
    EXPECT_EXIT(
        {
            SM_Initialise();
            SM_AtExit(say, 1);
            SM_AtExit(say, 2);
            SM_AtExit(drop_next, 0);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^<0:1>$");
}

TEST(Process, CtrlCSetsTheFlagEachTime)
{
    SM_EnableCtlcHandler(1);
    EXPECT_EQ(SM_Aborted(), 0);
    for (int i = 0; i < 2; i++) {
        std::raise(SIGINT);
        EXPECT_NE(SM_Aborted(), 0);
        SM_ClearAbort();
        EXPECT_EQ(SM_Aborted(), 0);
    }
    std::raise(SIGINT);
    const SM_HANDLER before = SM_EnableCtlcHandler(0);
    EXPECT_NE(before, nullptr);
    EXPECT_EQ(SM_Aborted(), 0);
    EXPECT_EQ(SM_EnableCtlcHandler(1), SIG_DFL);
}

TEST(Process, PlaceholdersSaySo)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(SM_EnableInterrupts(), 0);
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "SM_EnableInterrupts: !! Not implemented !!\n");
    EXPECT_STREQ(TIM_Message(TIM_ConvertTime()), "Function not implemented");
    EXPECT_STREQ(TIM_Message(1), "Illegal date/time format");
    EXPECT_NE(TIM_Message(3), nullptr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(ERRMSG_DisplayError("disk full"), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error: disk full\n");
}

TEST(Process, ToolNames)
{
    std::string names;
    for (int32_t tool = 0; tool < 16; tool++)
        names += std::string(TID_ToolName(tool)) + " ";
    EXPECT_EQ(names, "Toll Koblink Pkob Bkob ScribeVBuild?? MarshHexConv TollDebugger TollEmulator "
                     "RoutineWalker Lumen EasyQuillBuilder Platter Dkob Ferrule Gusset Tappet ");
    EXPECT_EQ(TID_ToolName(-1), nullptr);
    EXPECT_EQ(TID_ToolName(16), nullptr);
}

TEST(Process, Time)
{
    setenv("TZ", "UTC", 1);
    TIM_UNPACKED_TIME unpacked;
    EXPECT_EQ(TIM_UnpackTime(952268885, &unpacked), 0); // 5 March 2000, a Sunday
    EXPECT_EQ(unpacked.seconds, 5);
    EXPECT_EQ(unpacked.minutes, 8);
    EXPECT_EQ(unpacked.hours, 15);
    EXPECT_EQ(unpacked.day_of_month, 5);
    EXPECT_EQ(unpacked.month, 2);
    EXPECT_EQ(unpacked.year, 100);
    EXPECT_EQ(unpacked.day_of_week, 0);
    EXPECT_EQ(unpacked.day_of_year, 64);
    EXPECT_STREQ(TIM_TimeString(952268885), " 5-Mar-2000 15:08");
    EXPECT_STREQ(TIM_TimeString(952268885 + 10 * 86400), "15-Mar-2000 15:08");
    for (const int64_t time : { INT64_MAX, INT64_MIN, int64_t{ 1 } << 40, int64_t{ -1 } << 40 }) {
        EXPECT_EQ(std::strlen(TIM_TimeString(time)), 17u) << time;
        EXPECT_EQ(TIM_UnpackTime(time, &unpacked), 0);
    }
}

} // namespace
