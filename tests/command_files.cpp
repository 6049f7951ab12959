/*
 * Where commands come from: the console, command files, the arguments of the program, a client's reader.
 */
#include "command_session.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <ostrum/extra.h>
#include <ostrum/sm.h>
#include <sys/resource.h>
#include <vector>

namespace
{

class CommandFiles : public CommandSession
{
protected:
    void SetUp() override
    {
        CommandSession::SetUp();
        root = CLI_Node(nullptr, "tool", nullptr, 0, "");
        CLI_CharParameter(CLI_Node(root, "SAY", print_command, 0, ""), "What", CLI_MANDATORY, 0,
                          300, "");
        CLI_ListParameter(CLI_Node(root, "LIST", print_command, 0, ""), "Items", CLI_OPTIONAL, 0,
                          ',', "");
        CLI_NODE *note = CLI_Node(root, "NOTE", print_command, 0, "");
        CLI_CharParameter(note, "Text", CLI_PROMPTED, 0, 9, "");
        CLI_CharParameter(CLI_Qualifier(note, "TO", CLI_PROMPTED, 0, ""), "To", 0, 0, 9, "");
        CLI_CharParameter(
            CLI_Qualifier(CLI_Node(root, "SEND", print_command, 0, ""), "TO", CLI_MANDATORY, 0, ""),
            "To", CLI_OPTIONAL, 0, 9, "");
        CLI_Node(
            root, "QUIT", [](intptr_t) { CLI_Exit(); }, 0, "");
        CLI_Node(
            root, "FAIL",
            [](intptr_t times) {
                while (times-- > 0)
                    CLI_FailCommand();
            },
            2, "");
        CLI_Node(
            root, "ABORT", [](intptr_t) { std::raise(SIGINT); }, 0, "");
        CLI_Node(
            root, "RUN", [](intptr_t) { CLI_DoCommandFile("quiet.com", 1); }, 0, "");
    }

    CLI_NODE *root = nullptr;
};

TEST_F(CommandFiles, EchoNestAndEnd)
{
    write("outer", "SAY one\r\n\r\n\n! a comment\n@inner\n@missing\nSAY four");
    write("inner.com", "SAY two\nBAD\nSAY three\n");
    write("quiet.com", "SAY softly\nSAY\n");
    EXPECT_EQ(session(root, "@outer\nSAY end\n"),
              "<< Reading commands from outer\n"
              "> SAY one\n<SAY|one>\n> ! a comment\n> @inner\n<< Reading commands from inner.com\n"
              "> SAY two\n<SAY|two>\n> BAD\nBAD\n  ^\n** Command not recognised\n"
              "> SAY three\n<SAY|three>\n<< End of command file inner\n"
              "> @missing\n** Failed to open command file missing\n"
              "> SAY four\n<SAY|four>\n<< End of command file outer\n\n> <SAY|end>\n");
    EXPECT_EQ(session(root, "RUN\n"), "<SAY|softly>\nSAY\n  ^\n** Mandatory parameters missing\n");
    // What is pushed first is read first; without a console underneath that is all.
    EXPECT_EQ(CLI_DoCommandFile("none", 1), 0);
    EXPECT_EQ(CLI_DoCommandFile("quiet", 1), 1);
    EXPECT_EQ(commands(root), "<SAY|softly>\nSAY\n  ^\n** Mandatory parameters missing\n");
}

TEST_F(CommandFiles, NothingIsAskedFor)
{
    write("f.com", "NOTE\nSEND\nNOTE ? more\n");
    const std::string printed = session(root, "@f\n");
    EXPECT_TRUE(printed.starts_with("<< Reading commands from f.com\n> NOTE\n<NOTE|-|/TO>\n"
                                    "> SEND\nSEND\n   ^\n** Mandatory parameters missing\n"
                                    "> NOTE ? more\nCommand   : tool NOTE "))
        << printed;
}

TEST_F(CommandFiles, ThatReadThemselves)
{
    write("self.com", "SAY 1\n@self\n@./SELF.com\n");
    std::filesystem::create_symlink("self.com", "link");
    write("ping.com", "@link\n@pong\n");
    write("pong.com", "@ping\n@self\n");
    const std::string self = "> SAY 1\n<SAY|1>\n> @self\n** Failed to open command file self\n"
                             "> @./SELF.com\n** Failed to open command file ./SELF.com\n";
    EXPECT_EQ(session(root, "@self\n"),
              "<< Reading commands from self.com\n" + self + "<< End of command file self\n");
    EXPECT_EQ(session(root, "@ping\n"),
              "<< Reading commands from ping.com\n> @link\n<< Reading commands from link\n" + self +
                  "<< End of command file link\n> @pong\n<< Reading commands from pong.com\n"
                  "> @ping\n** Failed to open command file ping\n"
                  "> @self\n<< Reading commands from self.com\n" +
                  self +
                  "<< End of command file self\n<< End of command file pong\n"
                  "<< End of command file ping\n");
}

// No line hurts, and none is carried out in part.
TEST_F(CommandFiles, LinesOfAnyKind)
{
    const std::string fits = "SAY " + std::string(250, 'x');
    const std::string wide = "SAY " + std::string(251, 'x');
    const std::string huge = "SAY " + std::string(100000, ' ') + "x";
    EXPECT_EQ(session(root, fits + "\n"), "<" + std::string("SAY|") + fits.substr(4) + ">\n");
    EXPECT_EQ(session(root, wide + "\n"), "** Too long (max 254 chars)\n");
    EXPECT_EQ(session(root, "!" + wide + "\nSAY a\n"), "\n> <SAY|a>\n");
    EXPECT_EQ(session(root, huge + "\nSAY b\n" + huge),
              "** Too long (max 254 chars)\n\n> <SAY|b>\n\n> "
              "** Too long (max 254 chars)\n");
    write("f.com", huge + "\rSAY b\n" + wide);
    EXPECT_EQ(session(root, "@f\n"),
              "<< Reading commands from f.com\n> " + huge.substr(0, 254) +
                  "\n** Too long (max 254 chars)\n> SAY b\n<SAY|b>\n> " + wide.substr(0, 254) +
                  "\n** Too long (max 254 chars)\n<< End of command file f\n");
    EXPECT_EQ(session(root, std::string("SAY x\0 y\n", 9)),
              "SAY x\x1a y\n      ^\n** Extra parameters supplied\n");
    const std::string items = std::string(249, 'i');
    EXPECT_EQ(session(root, "LIST a\nLIST " + items + "\n"),
              "<LIST|a>\n\n> <LIST|" + items + ">\n");
    std::string bytes;
    for (int i = 0; i < 100000; i++)
        bytes += static_cast<char>(i * 7919 >> 3);
    write("binary", bytes);
    EXPECT_TRUE(
        session(root, "@binary\n@/\n@\n@" + std::string(200, 'n') + "\n")
            .ends_with("\n> ** Failed to open command file " + std::string(200, 'n') + "\n"));
}

TEST_F(CommandFiles, CountOfFailures)
{
    SM_EnableCtlcHandler(1);
    write("bad.com", "SAY\nFAIL\n");
    static constexpr struct {
        const char *typed;
        int32_t count;
    } cases[] = {
        { "SAY a\n?\n\n  \n! BAD\n", 0 }, // nothing of this failed
        { "BAD\n", 1 },
        { "SAY\n\n", 1 }, // asked for and not given
        { "FAIL\nFAIL\nSAY a\n", 2 },
        { "ABORT\nSAY a\n", 1 },
        { "@missing\n", 1 },
        { "@bad\n", 2 },
    };
    for (const auto &row : cases) {
        const int32_t before = CLI_FailedCommands();
        const std::string printed = session(root, row.typed);
        EXPECT_EQ(CLI_FailedCommands() - before, row.count) << row.typed;
    }
    EXPECT_EQ(session(root, "ABORT\nSAY a\n"), "** Aborted with ^C\n\n> <SAY|a>\n");
    SM_EnableCtlcHandler(0);
}

TEST_F(CommandFiles, ExitLeavesTheRestForLater)
{
    write("f.com", "SAY 1\nQUIT\nSAY 2\n");
    type("@f\nSAY 3\n");
    EXPECT_EQ(commands(root), "\n> << Reading commands from f.com\n> SAY 1\n<SAY|1>\n> QUIT\n");
    EXPECT_TRUE(CLI_HasSource());
    EXPECT_EQ(commands(root), "> SAY 2\n<SAY|2>\n<< End of command file f\n\n> <SAY|3>\n\n> ");
    EXPECT_FALSE(CLI_HasSource());
}

// A terminal that has gone away, and a standard input that was never there, are at their end.
TEST_F(CommandFiles, ClosedInput)
{
    ASSERT_NE(std::freopen(".", "r", stdin), nullptr); // every read of a directory fails
    EXPECT_EQ(commands(root), "\n> ");
    type("SAY");
    EXPECT_EQ(commands(root), "\n> What = \n> ");
    close(STDIN_FILENO);
    EXPECT_EQ(commands(root), "\n> ");
    EXPECT_EQ(arguments(root, { "SAY" }), "0What = ");
}

TEST_F(CommandFiles, TooManyAreRefused)
{
    const rlimit few = { .rlim_cur = 40, .rlim_max = 40 };
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    for (int i = 0; i < 50; i++)
        write("f" + std::to_string(i), "@f" + std::to_string(i + 1) + "\n");
    EXPECT_NE(session(root, "@f0\nSAY a\n").find("** Failed to open command file f3"),
              std::string::npos);
}

TEST_F(CommandFiles, Arguments)
{
    CLI_NODE *tool = CLI_Node(nullptr, "tool", nullptr, 0, "");
    CLI_CharParameter(tool, "File", CLI_MANDATORY, 0, 20, "");
    CLI_PARAMETER *items =
        CLI_ListParameter(CLI_Qualifier(tool, "ITEMS", 0, 1, ""), "Items", 0, 0, ',', "");
    CLI_Qualifier(tool, "VERBOSE", CLI_OPTIONAL, 1, "");
    const std::string list(5000, 'i');
    const std::string with_list = "/ITEMS=" + list;
    const struct {
        std::vector<const char *> list;
        std::string printed, values, then;
    } cases[] = {
        { { "x.kob" }, "1", "tool|x.kob", "" },
        { { "a b", "/V" }, "1", "tool|a b|/VERBOSE", "" },
        { { "say \"hi\"" }, "1", "tool|say \"hi\"", "" },
        { { "x", "/IT=a b, c" }, "1", "tool|x|/ITEMS=a b, c", "" },
        { { "/ITEMS=a = b", "x" }, "1", "tool|x|/ITEMS=a = b", "" },
        { { "x", with_list.c_str() }, "1", "tool|x|/ITEMS=" + list, "" },
        { { "x", "SAY", "a b" }, "1", "tool|x", "> SAY \"a b\" \n<SAY|a b>\n" },
        { { "x", "/V", "BAD" },
          "1",
          "tool|x|/VERBOSE",
          "> BAD \nBAD \n  ^\n** Command not recognised\n" },
        { { "x", "! none" },
          "1",
          "tool|x",
          "> \"! none\" \n\"! none\" \n       ^\n** Command not recognised\n" },
        { { "x", list.c_str() },
          "1",
          "tool|x",
          "> " + list.substr(0, 254) + "\n** Too long (max 254 chars)\n" },
        { { "x", "/V", "/I" }, "0** /VERBOSE cannot be specified with /ITEMS\n", "", "" },
        { { "/X" }, "0/X \n ^\n** Qualifier not recognised\n", "", "" },
        { {}, "0File = ", "", "" },
    };
    for (const auto &row : cases) {
        EXPECT_EQ(arguments(tool, row.list), row.printed);
        if (row.printed != "1") continue;
        EXPECT_EQ(current_command(), row.values);
        EXPECT_EQ(CLI_HasSource(), !row.then.empty());
        if (!row.then.empty()) {
            EXPECT_EQ(commands(root), row.then);
        }
    }
    const int32_t failed = CLI_FailedCommands();
    EXPECT_TRUE(arguments(tool, { "?" }).starts_with("0Command   : tool "));
    EXPECT_EQ(CLI_FailedCommands(), failed);
    EXPECT_EQ(arguments(tool, { "x", "/X" })[0], '0');
    EXPECT_EQ(CLI_FailedCommands(), failed + 1);
    EXPECT_EQ(arguments(nullptr, { "x" }), "1");
    EXPECT_EQ(arguments(root, { "SAY", "x" }), "1"); // the values are those of the root
    EXPECT_EQ(current_command(), "tool");
    EXPECT_GE(items->size, 5000);
}

// A command of the arguments takes the place of whatever would be read.
TEST_F(CommandFiles, ArgumentsReplaceTheSources)
{
    CLI_NODE *tool = CLI_Node(nullptr, "tool", nullptr, 0, "");
    write("f.com", "SAY 1\n");
    type("SAY 2\n");
    EXPECT_EQ(CLI_DoCommandFile("f", 1), 1);
    EXPECT_EQ(arguments(tool, { "@f" }), "1");
    EXPECT_EQ(commands(root), "> @f \n** Failed to open command file f \n");
    EXPECT_EQ(arguments(tool, {}), "1");
    EXPECT_EQ(commands(root), "\n> <SAY|2>\n\n> ");
}

TEST_F(CommandFiles, LinesFromAReader)
{
    static std::vector<std::string> lines;
    static std::string prompts;
    lines = { "SAY", "answer", std::string(300, 'x'), "NOTE", std::string(300, 'x'), "", "" };
    prompts.clear();
    type("SAY typed\n");
    CLI_SetLineReader(&lines, [](void *context, const char *prompt, char *line, int32_t size) {
        prompts += std::string(prompt) + "|";
        auto *rest = static_cast<std::vector<std::string> *>(context);
        if (rest->empty()) return -1;
        const std::string first = rest->front();
        rest->erase(rest->begin());
        std::memcpy(line, first.c_str(),
                    std::min<size_t>(first.size() + 1, static_cast<size_t>(size)));
        return static_cast<int32_t>(first.size()); // a line that was cut has no terminator
    });
    EXPECT_EQ(commands(root), "<SAY|answer>\n** Too long (max 254 chars)\n"
                              "** Too long (max 8 chars)\n<NOTE|-|/TO>\n");
    EXPECT_EQ(prompts,
              "\n> |What = |\n> |\n> |Text(Optional) = |Text(Optional) = |/TO(Optional) = |\n> |");
    CLI_SetLineReader(nullptr, nullptr);
    EXPECT_EQ(commands(root), "\n> <SAY|typed>\n\n> ");
}

} // namespace
