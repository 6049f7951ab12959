// The verifier of the tests finds what is wrong with code, and lets pass what is right.
#include <gtest/gtest.h>

#include "program.h"

namespace
{

using Bytes = std::vector<uint8_t>;

using enum evaluator::Code;

// A module M of these bytes, with its first one as the function M.f.
evaluator::Program module_of(const Bytes &code)
{
    const std::string path = (program::folder() / "m.kob").string();
    KOB_Initialise();
    KOB_MODULE *module = nullptr;
    EXPECT_EQ(KOB_NewModule(&module, path.c_str(), 0, "test", 1), 0);
    KOB_Code(module, code.data(), static_cast<int32_t>(code.size()));
    KOB_Symbol(module, KOB_GLOBAL, "M.f", "CODE", 0);
    EXPECT_EQ(KOB_CloseModule(module, 0, 1), 0);
    evaluator::Program linked = evaluator::link({ path });
    evaluator::verify(&linked);
    return linked;
}

struct Row {
    const char *finding; // "offset reason", empty for sound code
    Bytes code;
};

std::string first_finding(const evaluator::Program &linked)
{
    if (linked.findings.empty()) return "";
    return std::to_string(linked.findings[0].offset) + " " + linked.findings[0].reason;
}

TEST(Verifier, FindsWhatIsWrong)
{
    const Row rows[] = {
        { "", { 0, RET } },
        { "", { ALLOC, 0, 4, 0, LLW, JZ, 0, 4, 1, RET, 2, RET } },
        { "", { 1, SWITCH, 1, 0, 6, 0, 2, 0, RET, 1, RET } },
        { "", { 5, EXCEPTION, 0, 4, END_EXCEPTION, 1, 5, EXCEPTION, 0, 2, 0, RET } },
        { "", { 1, 2, RAISE } },
        { "", { STOP } },
        { "0 stack underflow", { ADD, RET } },
        { "1 stack underflow", { 1, ADD, RET } },
        { "0 stack underflow", { RET } },
        { "1 leads out of the code", { 1, POP } },
        { "0 leads out of the code", { JUMP, 0, 100 } },
        { "0 leads out of the code", { JUMP, 0xff, 0xf0 } },
        { "0 operand outside of the code", { JUMP, 0 } },
        { "1 operand outside of the code", { 1, SWITCH, 9, 0, 0 } },
        { "0 no such code: 90", { 90 } },
        { "0 no such code: 122", { 122 } },
        { "0 no such code: 200", { 200 } },
        { "4 leads into claimed code", { 33, 0, 0, POP, JUMP, 0xff, 0xfd } },
        { "5 stack differs by the way: 0 words or 1 from 4", { 1, JZ, 0, 3, 1, 2, RET } },
        { "1 ALLOC behind the start", { 1, ALLOC, 0, 4, RET } },
        { "0 odd frame size", { ALLOC, 0, 3, 0, RET } },
        { "2 operand of STRCMP", { 1, 1, STRCMP, ADD, RET } },
        { "0 call that was not opened", { CALL, 0, 0, 0, 0, RET } },
        { "3 takes words of another call", { 1, ARGS, 1, ADD, CALL, 0, 0, 0, 0, RET } },
        { "1 target outside of the code", { ARGS, CALL, 0, 0, 1, 0, RET } },
        { "0 target outside of the code", { LCA, 0, 0, 1, 0, RET } },
        { "2 returns with an open call", { ARGS, 1, RET } },
        { "1 closes a stretch that is not open", { 5, EXCEPTION, 0, 2, 0, RET } },
        { "1 handler without an end", { 5, EXCEPTION, 0, 3, 0, RET } },
        { "0 END_EXCEPTION outside of a handler", { END_EXCEPTION, 1, 0, RET } },
    };
    for (const Row &row : rows)
        EXPECT_EQ(first_finding(module_of(row.code)), row.finding);
}

// A call into another function's middle is found wherever the two meet.
TEST(Verifier, KeepsFunctionsApart)
{
    const evaluator::Program linked =
        module_of({ ARGS, CALL, 0, 0, 0, 4, POP, 1, RET }); // calls its own POP
    EXPECT_EQ(linked.findings.size(), 1u);
}

// What only running shows ends the run with a reason, never the process.
TEST(Verifier, RunsEndWithAReason)
{
    struct Case {
        const char *reason;
        Bytes code;
    };
    const Case cases[] = {
        { "null address", { 0, 42, RET } },
        { "bad address", { LIT, 0x7f, 0, 0, 0, 42, RET } },
        { "bad address to write", { 1, LCA, 0xff, 0xff, 0xff, 0xfe, 46, RET } },
        { "outside of the frame", { ALLOC, 0, 4, 4, LLW, RET } },
        { "outside of the frame", { 31, 37, 42, RET } },
        { "call of what is no function", { ARGS, 5, CALLI, RET } },
        { "call of what is no function", { ARGS, LIT, 0x7f, 0, 0, 0, CALLI, RET } },
        { "more arguments than the frame of M.f has",
          { ARGS, 1, CALL, 0xff, 0xff, 0xff, 0xfd, RET } },
        { "bad address of a block", { 0, 0, 9, 104, 0, RET } },
        { "runs too long", { JUMP, 0xff, 0xff } },
        { "calls nested too deeply", { ARGS, CALL, 0xff, 0xff, 0xff, 0xfe, RET } },
    };
    for (const Case &each : cases) {
        evaluator::Program linked = module_of(each.code);
        const evaluator::Result result = evaluator::run(&linked, "M.f", {});
        EXPECT_EQ(result.outcome, evaluator::Outcome::FAILED) << each.reason;
        EXPECT_EQ(result.reason, each.reason);
    }
}

} // namespace
