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
        CLI_Node(root, "SHOWALL", print_command, 0, "Show all");
        CLI_NODE *show = CLI_Node(root, "SHOW", print_command, 0, "Show something");
        CLI_CharParameter(show, "What", CLI_OPTIONAL, 2, 6, "");
        CLI_ListParameter(show, "Where", CLI_OPTIONAL, 0, ',', "");
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

// What a line prints, with its messages separated by bars and each behind the line and its caret.
std::string printed(const std::string &line, int32_t caret, std::string text)
{
    if (caret == 0) return text.empty() ? "" : text + "\n";
    const std::string head =
        line + "\n" + std::string(static_cast<size_t>(caret - 1), ' ') + "^\n** ";
    for (size_t at = text.find('|'); at != std::string::npos; at = text.find('|', at + head.size()))
        text.replace(at, 1, "\n" + head);
    return head + text + "\n";
}

TEST_F(CommandParsing, Lines)
{
    static constexpr struct {
        const char *line;
        int32_t caret;       // column of the caret; 0 if there is none
        const char *printed; // the command, or the messages, each with the line and the caret
    } cases[] = {
        // words and their abbreviations
        { "SHOWALL", 0, "<SHOWALL>" },
        { "sh", 2, "Command is ambiguous" },
        { "show", 0, "<SHOW|-|->" },
        { "showA", 0, "<SHOWALL>" },
        { "S", 1, "Command is ambiguous" },
        { "SET L 5", 0, "<LEVEL|5>" },
        { "SET\tL\t5\t", 0, "<LEVEL|5>" },
        { "'set' \"lev\" 5", 0, "<LEVEL|5>" },
        { "SIT", 3, "Command not recognised" },
        { "SET X 1", 5, "Command not recognised" },
        { "SET", 3, "Incomplete command" },
        { "  SET  ", 7, "Incomplete command" },
        { "   ", 0, "" },
        { "! SET", 0, "" },
        { " ! SET", 2, "Command not recognised" },
        { "COMMANDS_OF_MORE_THAN_31_CHARACTERS", 31,
          "Field is too long|Format of subcommand not recognised" },
        // numbers
        { "SET LEVEL -5", 0, "<LEVEL|-5>" },
        { "SET LEVEL 100", 0, "<LEVEL|100>" },
        { "SET LEVEL 101", 13, "Number out of range" },
        { "SET LEVEL -6", 12, "Number out of range" },
        { "SET LEVEL 5x", 12, "Bad Number" },
        { "SET LEVEL ''", 12, "Bad Number" },
        { "SET LEVEL 000000007", 0, "<LEVEL|7>" },
        { "SET LEVEL 0000000007", 19, "Field is too long|Bad Number" },
        { "SET LEVEL 1 2", 12, "Extra parameters supplied" },
        // choices
        { "SET MODE man", 0, "<MODE|1>" },
        { "SET MODE auto", 0, "<MODE|2>" },
        { "SET MODE AUTOM", 0, "<MODE|3>" },
        { "SET MODE A", 10, "Choice Value is ambiguous" },
        { "SET MODE B", 10, "Choice Value not recognised" },
        { "SET MODE AUTOMATICS", 18, "Field is too long|Missing Parameter" },
        // fields
        { "SHOW 'it''s' a,b", 0, "<SHOW|it's|a,b>" },
        { "SHOW \"a\"\"'b\"", 0, "<SHOW|a\"'b|->" },
        { "SHOW 'a b", 0, "<SHOW|a b|->" },
        { "SHOW it's", 0, "<SHOW|it's|->" },
        { "SHOW (a/b) [{c d} e]/f", 22, "Qualifier not recognised" },
        { "SHOW (a/b) [{c d} e]", 0, "<SHOW|(a/b)|[{c d} e]>" },
        { "SHOW )a (b", 0, "<SHOW|)a|(b>" },
        { "SHOW a", 6, "Not enough characters in this field" },
        { "SHOW abcde", 0, "<SHOW|abcde|->" },
        { "SHOW 'abcdef'", 11, "String is too long|Not enough characters in this field" },
        { "SHOW ab x?", 0, "<SHOW|ab|x?>" },
        { "COPY abcdef", 10, "Field is too long|Missing Parameter" },
        // qualifiers
        { "SET LEVEL 5/FAST", 0, "<LEVEL|5|/FAST>" },
        { "SET LEVEL/fa/NAME=x/STEP=3 5", 0, "<LEVEL|5|/FAST|/STEP=3|/NAME=x>" },
        { "SET LEVEL /STEP /FAST", 0, "<LEVEL|-|/FAST|/STEP>" },
        { "SET LEVEL /NAME =\"a b\"", 0, "<LEVEL|-|/NAME=a b>" },
        { "SET LEVEL /S", 12, "Qualifier is ambiguous" },
        { "SET LEVEL /", 11, "Qualifier is ambiguous" },
        { "SET /", 5, "Incomplete command" }, // the slash is the only qualifier of SET
        { "SET LEVEL /?", 12, "Qualifier not recognised" },
        { "SET LEVEL /HE", 13, "Qualifier not recognised" },
        { "SET LEVEL /FAST=1", 15, "Qualifier may not have a value" },
        { "SET LEVEL /NAME", 15, "This qualifier must have a value" },
        { "SET LEVEL /NAME 5", 16, "This qualifier must have a value" },
        { "SET LEVEL /NAME= x", 16, "Not enough characters in this field" },
        { "SET LEVEL /STEP=0123456789", 25, "Field is too long|Missing qualifier value" },
        { "SET LEVEL /FAST/SLOW", 0, "** /SLOW cannot be specified with /FAST" },
        { "SET LEVEL /STEP/SLOW/NAME=n", 0, "** /STEP cannot be specified with /SLOW" },
        // nothing is left of the command before
        { "SET LEVEL 4/STEP=3/FAST", 0, "<LEVEL|4|/FAST|/STEP=3>" },
        { "SET LEVEL /STEP", 0, "<LEVEL|-|/STEP>" },
    };
    for (const auto &row : cases)
        EXPECT_EQ(session(root, row.line + std::string("\n")),
                  printed(row.line, row.caret, row.printed))
            << row.line;
}

// Help stands in place of a command.
TEST_F(CommandParsing, Help)
{
    const std::string level = session(root, "SET LEVEL ?\n");
    EXPECT_TRUE(level.starts_with("Command   : tool SET LEVEL ")) << level;
    for (const char *line : { "SET LEVEL?5", "SET LEVEL 5 /FAST ?", "SET LEVEL/HeLp=1 and more" })
        EXPECT_EQ(session(root, line + std::string("\n")), level) << line;
    EXPECT_TRUE(session(root, "set?\n").starts_with("SET\nSet something\n"));
    EXPECT_TRUE(session(root, "/help\n").starts_with("tool\n"));
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
            return 0;
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
        { "", "0 SET|  SHOWALL|  SHOW|  COPY|  ASK| " },
        { "  s", "2 SET|  SHOWALL|  SHOW| " },
        { "show", "0 SHOWALL|  SHOW| " },
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
        { "set level 5 f", "" },
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
    const std::string deep(100, 'l');
    std::filesystem::create_directory(deep);
    write(deep + "/" + std::string(40, 'n') + ".kob", ""); // no path can name this one
    write("q\"x.kob", "");
    std::filesystem::create_directory("adir");
    std::filesystem::create_directory("a dir");
    write("adir/in.kob", "");
    CLI_NODE *load = CLI_Node(root, "LOAD", print_command, 0, "");
    CLI_SetFilePattern(CLI_CharParameter(load, "File", CLI_OPTIONAL, 0, 80, ""), "*.kob");
    CLI_SetFilePattern(CLI_ListParameter(load, "More", CLI_OPTIONAL, 0, ',', ""), "*.kob");
    const struct {
        std::string line, found;
    } cases[] = {
        { "LOAD A", "5 \"a b.kob\"|  a.kob|  ab.kob|  \"a dir/| \"adir/|" },
        { "LOAD ab", "5 ab.kob| " },
        { "LOAD adir\\", "5 adir\\in.kob| " },
        { "LOAD \"adir/i", "5 \"adir/in.kob\"| " },
        { "LOAD x y.kob,ab", "7 y.kob,ab.kob|" },
        { "LOAD x \"y, a ", "7 \"y, a b.kob\"| \"y, a dir/|" },
        { "LOAD q", "5 \"q\"\"x.kob\"| " },
        { "LOAD \"x\"(,ab", "8  \"(,ab.kob\"|" }, // apart from the quote in front
        { "LOAD " + deep + "\\", "" },
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
        const bool is_command = std::string(prompt) == "\n> ";
        if (is_command && !found.empty()) return -1;
        std::snprintf(line, 10, "%s", is_command ? "SET MODE" : "auto");
        if (!is_command) found = prompt + completions(tree, "au");
        return is_command ? 8 : 4;
    });
    EXPECT_EQ(commands(root), "<MODE|2>\n");
    EXPECT_EQ(found, "Mode = 0 AUTO| AUTOMATIC|");
}

} // namespace
