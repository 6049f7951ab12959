/*
 * Command lines: words, fields, values, qualifiers, prompts and completion.
 */
#include "command_session.h"

#include <ostrum/extra.h>
#include <vector>

namespace
{

class CommandParsing : public CommandSession
{
protected:
    void SetUp() override
    {
        CommandSession::SetUp();
        root = CLI_Node(nullptr, "tool", nullptr, 0, "");
        make_set(CLI_Node(root, "SET", nullptr, 0, "Set something"));
        CLI_NODE *show = CLI_Node(root, "SHOW", print_command, 0, "Show something");
        CLI_CharParameter(show, "What", CLI_OPTIONAL, 2, 6, "");
        CLI_ListParameter(show, "Where", CLI_OPTIONAL, 0, ',', "");
        CLI_Node(root, "SHOWALL", print_command, 0, "Show all");
        CLI_CharParameter(CLI_Node(root, "COPY", print_command, 0, ""), "From", CLI_MANDATORY, 0, 6,
                          "");
        make_ask(CLI_Node(root, "ASK", print_command, 0, "Ask"));
    }

    static void make_set(CLI_NODE *set)
    {
        CLI_Qualifier(set, "ONLY", CLI_OPTIONAL, 0, "");
        CLI_NODE *level = CLI_Node(set, "LEVEL", print_command, 0, "");
        CLI_IntParameter(level, "Level", CLI_OPTIONAL, -5, 100, "");
        CLI_Qualifier(level, "FAST", CLI_OPTIONAL, 1, "");
        CLI_Qualifier(level, "SLOW", CLI_OPTIONAL, 3, "");
        CLI_IntParameter(CLI_Qualifier(level, "STEP", CLI_OPTIONAL, 2, ""), "Step", CLI_OPTIONAL, 1,
                         9, "");
        CLI_CharParameter(CLI_Qualifier(level, "NAME", CLI_OPTIONAL, 0, ""), "Name", CLI_MANDATORY,
                          1, 8, "");
        CLI_PARAMETER *mode = CLI_ChoiceParameter(CLI_Node(set, "MODE", print_command, 0, ""),
                                                  "Mode", CLI_MANDATORY, "");
        CLI_Choice(mode, "MANUAL", 1, "By hand");
        CLI_Choice(mode, "AUTO", 2, "");
        CLI_Choice(mode, "AUTOMATIC", 3, "");
    }

    static void make_ask(CLI_NODE *ask)
    {
        CLI_IntParameter(ask, "Count", CLI_MANDATORY, 1, 5, "How many");
        CLI_ListParameter(ask, "Items", CLI_PROMPTED, 3, ';', "");
        CLI_CharParameter(ask, "Note", CLI_OPTIONAL, 0, 6, "");
        CLI_CharParameter(CLI_Qualifier(ask, "TITLE", CLI_PROMPTED, 0, ""), "Title", CLI_OPTIONAL,
                          2, 6, "");
    }

    CLI_NODE *root = nullptr;
};

TEST_F(CommandParsing, Lines)
{
    const struct {
        std::string line, printed;
    } cases[] = {
        // words and their abbreviations
        { "SHOWALL", "<SHOWALL>\n" },
        { "sh", "sh\n ^\n** Command is ambiguous\n" },
        { "show", "<SHOW|-|->\n" },
        { "showA", "<SHOWALL>\n" },
        { "S", "S\n^\n** Command is ambiguous\n" },
        { "SET L 5", "<LEVEL|5>\n" },
        { "SET\tL\t5\t", "<LEVEL|5>\n" },
        { "'set' \"lev\" 5", "<LEVEL|5>\n" },
        { "SIT", "SIT\n  ^\n** Command not recognised\n" },
        { "SET X 1", "SET X 1\n    ^\n** Command not recognised\n" },
        { "SET", "SET\n  ^\n** Incomplete command\n" },
        { "  SET  ", "  SET  \n      ^\n** Incomplete command\n" },
        { "   ", "" },
        { std::string(32, 'C'), std::string(32, 'C') + "\n" + std::string(30, ' ') +
                                    "^\n** Field is too long\n" + std::string(32, 'C') + "\n" +
                                    std::string(30, ' ') +
                                    "^\n** Format of subcommand not recognised\n" },
        // comments
        { "! SET", "" },
        { " ! SET", " ! SET\n ^\n** Command not recognised\n" },
        // numbers
        { "SET LEVEL -5", "<LEVEL|-5>\n" },
        { "SET LEVEL 100", "<LEVEL|100>\n" },
        { "SET LEVEL 101", "SET LEVEL 101\n            ^\n** Number out of range\n" },
        { "SET LEVEL -6", "SET LEVEL -6\n           ^\n** Number out of range\n" },
        { "SET LEVEL 5x", "SET LEVEL 5x\n           ^\n** Bad Number\n" },
        { "SET LEVEL ''", "SET LEVEL ''\n           ^\n** Bad Number\n" },
        { "SET LEVEL 000000007", "<LEVEL|7>\n" },
        { "SET LEVEL 0000000007",
          "SET LEVEL 0000000007\n                  ^\n** Field is too long\n"
          "SET LEVEL 0000000007\n                  ^\n** Bad Number\n" },
        { "SET LEVEL 1 2", "SET LEVEL 1 2\n           ^\n** Extra parameters supplied\n" },
        // choices
        { "SET MODE man", "<MODE|1>\n" },
        { "SET MODE auto", "<MODE|2>\n" },
        { "SET MODE AUTOM", "<MODE|3>\n" },
        { "SET MODE A", "SET MODE A\n         ^\n** Choice Value is ambiguous\n" },
        { "SET MODE B", "SET MODE B\n         ^\n** Choice Value not recognised\n" },
        { "SET MODE AUTOMATICS",
          "SET MODE AUTOMATICS\n                 ^\n** Field is too long\n"
          "SET MODE AUTOMATICS\n                 ^\n** Missing Parameter\n" },
        // fields
        { "SHOW 'it''s' a,b", "<SHOW|it's|a,b>\n" },
        { "SHOW \"a\"\"'b\"", "<SHOW|a\"'b|->\n" },
        { "SHOW 'a b", "<SHOW|a b|->\n" },
        { "SHOW it's", "<SHOW|it's|->\n" },
        { "SHOW (a/b) [{c d} e]/f", "SHOW (a/b) [{c d} e]/f\n"
                                    "                     ^\n** Qualifier not recognised\n" },
        { "SHOW (a/b) [{c d} e]", "<SHOW|(a/b)|[{c d} e]>\n" },
        { "SHOW )a (b", "<SHOW|)a|(b>\n" },
        { "SHOW a", "SHOW a\n     ^\n** Not enough characters in this field\n" },
        { "SHOW abcde", "<SHOW|abcde|->\n" },
        { "SHOW 'abcdef'", "SHOW 'abcdef'\n          ^\n** String is too long\n"
                           "SHOW 'abcdef'\n          ^\n** Not enough characters in this field\n" },
        { "SHOW ab x?", "<SHOW|ab|x?>\n" },
        { "COPY abcdef", "COPY abcdef\n         ^\n** Field is too long\n"
                         "COPY abcdef\n         ^\n** Missing Parameter\n" },
        // qualifiers
        { "SET LEVEL 5/FAST", "<LEVEL|5|/FAST>\n" },
        { "SET LEVEL/fa/NAME=x/STEP=3 5", "<LEVEL|5|/FAST|/STEP=3|/NAME=x>\n" },
        { "SET LEVEL /STEP /FAST", "<LEVEL|-|/FAST|/STEP>\n" },
        { "SET LEVEL /NAME =\"a b\"", "<LEVEL|-|/NAME=a b>\n" },
        { "SET LEVEL /S", "SET LEVEL /S\n           ^\n** Qualifier is ambiguous\n" },
        { "SET LEVEL /", "SET LEVEL /\n          ^\n** Qualifier is ambiguous\n" },
        { "SET /", "SET /\n    ^\n** Incomplete command\n" }, // the only one of its node
        { "SET LEVEL /?", "SET LEVEL /?\n           ^\n** Qualifier not recognised\n" },
        { "SET LEVEL /HE", "SET LEVEL /HE\n            ^\n** Qualifier not recognised\n" },
        { "SET LEVEL /FAST=1",
          "SET LEVEL /FAST=1\n              ^\n** Qualifier may not have a value\n" },
        { "SET LEVEL /NAME",
          "SET LEVEL /NAME\n              ^\n** This qualifier must have a value\n" },
        { "SET LEVEL /NAME 5",
          "SET LEVEL /NAME 5\n               ^\n** This qualifier must have a value\n" },
        { "SET LEVEL /NAME= x",
          "SET LEVEL /NAME= x\n               ^\n** Not enough characters in this field\n" },
        { "SET LEVEL /STEP=12345678901",
          "SET LEVEL /STEP=12345678901\n                        ^\n** Field is too long\n"
          "SET LEVEL /STEP=12345678901\n                        ^\n** Missing qualifier value\n" },
        { "SET LEVEL /FAST/SLOW", "** /SLOW cannot be specified with /FAST\n" },
        { "SET LEVEL /STEP/SLOW/NAME=n", "** /STEP cannot be specified with /SLOW\n" },
    };
    for (const auto &row : cases)
        EXPECT_EQ(session(root, row.line + "\n"), row.printed) << row.line;
    EXPECT_EQ(session(root, "SET LEVEL 4/STEP=3/FAST\n"), "<LEVEL|4|/FAST|/STEP=3>\n");
    EXPECT_EQ(session(root, "SET LEVEL /STEP\n"), "<LEVEL|-|/STEP>\n"); // nothing is left of that
}

// Help stands in place of a command, and counts as nothing.
TEST_F(CommandParsing, Help)
{
    const int32_t failed_before = CLI_FailedCommands();
    static constexpr struct {
        const char *line, *first_line;
    } cases[] = {
        { "?", "tool" },
        { "SET ?", "SET" },
        { "SET?", "SET" },
        { "SET LEVEL?5", "LEVEL" }, // the page has the path
        { "SET LEVEL 5 /FAST ?", "LEVEL" },
        { "SHOW /HeLp and more", "SHOW" },
        { "/help", "tool" },
    };
    for (const auto &row : cases) {
        const std::string printed = session(root, std::string(row.line) + "\n");
        EXPECT_NE(printed.substr(0, printed.find('\n')).find(row.first_line), std::string::npos)
            << row.line << "\n"
            << printed;
        EXPECT_EQ(printed.find("**"), std::string::npos) << printed;
        EXPECT_EQ(printed.find('<' + std::string(row.first_line)), std::string::npos) << printed;
    }
    EXPECT_EQ(CLI_FailedCommands(), failed_before);
}

TEST_F(CommandParsing, Prompts)
{
    const std::string list(120, 'x');
    const struct {
        std::string typed, printed;
    } cases[] = {
        { "ASK\n2\na;b\nhead\n",
          "Count = Items(Optional) = /TITLE(Optional) = <ASK|2|a;b|-|/TITLE=head>\n" },
        { "ASK 2 abc note /TITLE\n", "<ASK|2|abc|note|/TITLE>\n" },
        { "ASK 2\n\n\n", "Items(Optional) = /TITLE(Optional) = <ASK|2|-|-|/TITLE>\n" },
        { "ASK\n\n", "Count = " }, // refused without a word
        { "ASK\nx\n6\n0000000001\n3\nab\nabc\n1\nlength\nok\n",
          "Count = ** Bad Number\nCount = ** Number out of range\nCount = ** Too long (max 9 "
          "chars)\n"
          "Count = Items(Optional) = ** Not enough characters in this field\nItems(Optional) = "
          "/TITLE(Optional) = ** Not enough characters in this field\n"
          "/TITLE(Optional) = ** Too long (max 5 chars)\n/TITLE(Optional) = "
          "<ASK|3|abc|-|/TITLE=ok>\n" },
        { "ASK\n?\n1\n\n\n", "Count =           : Count (Mandatory Integer parameter (Range "
                             "1-5))\n          : How many\n"
                             "Count = Items(Optional) = /TITLE(Optional) = <ASK|1|-|-|/TITLE>\n" },
        { "ASK 1\n" + list + "\n" + list.substr(1) + "\n\n",
          "Items(Optional) = ** Too long (max 119 chars)\nItems(Optional) = /TITLE(Optional) = "
          "<ASK|1|" +
              list.substr(1) + "|-|/TITLE>\n" },
        // behind a short buffer, a long list still fits
        { "ASK 1 " + list + list + "\n\n",
          "/TITLE(Optional) = <ASK|1|" + list + list + "|-|/TITLE>\n" },
        { "ASK 1 abc\n" + std::string(100000, 'y') + "\n\n",
          "/TITLE(Optional) = ** Too long (max 5 chars)\n/TITLE(Optional) = "
          "<ASK|1|abc|-|/TITLE>\n" },
        { "SET MODE\nwrong\nm\n", "Mode = ** Choice Value not recognised\nMode = <MODE|1>\n" },
    };
    for (const auto &row : cases)
        EXPECT_EQ(session(root, row.typed), row.printed) << row.typed.substr(0, 80);
    // The end of the input is no value, also behind an answer that was none.
    EXPECT_EQ(session(root, "ASK\n6"), "Count = ** Number out of range\nCount = ");
    EXPECT_EQ(session(root, "ASK 1 abc\nx"),
              "/TITLE(Optional) = ** Not enough characters in this field\n"
              "/TITLE(Optional) = <ASK|1|abc|-|/TITLE>\n");
}

TEST_F(CommandParsing, QualifiersWithoutAValueCannotBeAskedFor)
{
    CLI_NODE *node = CLI_Node(root, "GO", print_command, 0, "");
    CLI_Qualifier(node, "MAYBE", CLI_PROMPTED, 0, "");
    EXPECT_EQ(session(root, "GO\n"), "<GO>\n");
    CLI_Qualifier(node, "SURELY", CLI_MANDATORY, 0, "");
    EXPECT_EQ(session(root, "GO\n"), "GO\n ^\n** Mandatory parameters missing\n");
    EXPECT_EQ(session(root, "GO/S\n"), "<GO|/SURELY>\n");
}

// --- completion ---

// "text|ending " for each completion, behind the place that they replace.
std::string completions(const CLI_NODE *root, const std::string &line)
{
    struct RESULT {
        std::string text;
        int32_t start = -1;
    } result;
    const int32_t count = CLI_Complete(
        root, line.c_str(),
        [](void *context, const CLI_COMPLETION *completion) {
            auto *found = static_cast<RESULT *>(context);
            found->start = completion->start;
            found->text += std::string(" ") + completion->text + "|" + completion->ending;
        },
        &result);
    EXPECT_EQ(CLI_Complete(root, line.c_str(), nullptr, nullptr), count);
    return count == 0 ? "" : std::to_string(result.start) + result.text;
}

TEST_F(CommandParsing, Completion)
{
    CLI_PARAMETER *choice =
        CLI_ChoiceParameter(CLI_Qualifier(root, "SPEED", CLI_OPTIONAL, 0, ""), "Speed", 0, "");
    CLI_Choice(choice, "VERY FAST", 1, "");
    static constexpr struct {
        const char *line, *found;
    } cases[] = {
        { "", "0 SET|  SHOW|  SHOWALL|  COPY|  ASK| " },
        { "  s", "2 SET|  SHOW|  SHOWALL| " },
        { "show", "0 SHOW|  SHOWALL| " },
        { "set m", "4 MODE| " },
        { "set 'm", "4 MODE| " },
        { "set mode ", "9 MANUAL|  AUTO|  AUTOMATIC| " },
        { "set mode au", "9 AUTO|  AUTOMATIC| " },
        { "set mode auto ", "14 /HELP|" },
        { "set level/", "9 /FAST|  /SLOW|  /STEP| /NAME|= /HELP|" },
        { "set level 5 /s", "12 /SLOW|  /STEP|" },
        { "set level /name=x /fa", "18 /FAST| " },
        { "/speed = v", "" },
        { "/speed=v", "7 \"VERY FAST\"| " },
        { "/speed=\"very f", "7 \"VERY FAST\"| " },
        { "set x ", "" },
        { "s ", "" },
        { "set level 5 6", "" },
        { "set level /fast=", "" },
        { "set?", "" },
        { "! s", "" },
        { "show a", "" },
    };
    for (const auto &row : cases)
        EXPECT_EQ(completions(root, row.line), row.found) << row.line;
}

TEST_F(CommandParsing, CompletionOfFiles)
{
    for (const char *name : { "a.kob", "ab.kob", "a b.kob", "a.tl", "go.com" })
        write(name, "");
    std::filesystem::create_directory("adir");
    std::filesystem::create_directory("a dir");
    write("adir/in.kob", "");
    CLI_NODE *load = CLI_Node(root, "LOAD", print_command, 0, "");
    CLI_SetFilePattern(CLI_CharParameter(load, "File", CLI_OPTIONAL, 0, 80, ""), "*.kob");
    CLI_SetFilePattern(CLI_ListParameter(load, "More", CLI_OPTIONAL, 0, ',', ""), "*.kob");
    const std::string all = " \"a b.kob\"| ";
    const struct {
        std::string line, found;
    } cases[] = {
        { "LOAD A", "5 \"a b.kob\"|  a.kob|  ab.kob|  \"a dir\\| adir\\|" },
        { "LOAD ab", "5 ab.kob| " },
        { "LOAD adir\\", "5 adir\\in.kob| " },
        { "LOAD \"adir/i", "5 \"adir/in.kob\"| " },
        { "LOAD x y.kob,ab", "7 y.kob,ab.kob|" },
        { "LOAD x \"y, a ", "7 \"y, a b.kob\"| \"y, a dir\\|" },
        { "LOAD x.kob/", "10 /HELP|" },
        { "LOAD nowhere\\", "" },
        { "LOAD " + std::string(500, 'd') + "\\", "" },
        { "@g", "1 go.com|" },
        { "@adir/", "" },
    };
    for (const auto &row : cases)
        EXPECT_EQ(completions(root, row.line), row.found) << row.line;
}

// While a value is asked for, the line is that value alone.
TEST_F(CommandParsing, CompletionOfAnswers)
{
    static CLI_NODE *tree;
    static std::string found;
    tree = root;
    found.clear();
    CLI_SetLineReader(nullptr, [](void *, const char *prompt, char *line, int32_t) -> int32_t {
        const bool is_command = std::string(prompt) == "> ";
        if (is_command && !found.empty()) return -1;
        std::snprintf(line, 10, "%s", is_command ? "SET MODE" : "auto");
        if (!is_command) found = prompt + completions(tree, "au");
        return is_command ? 8 : 4;
    });
    EXPECT_EQ(commands(root), "\n<MODE|2>\n\n");
    EXPECT_EQ(found, "Mode = 0 AUTO| AUTOMATIC|");
}

} // namespace
