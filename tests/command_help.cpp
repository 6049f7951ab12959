/*
 * Help, as it is printed for a tree of commands.
 */
#include "command_session.h"

#include <gtest/gtest.h>
#include <ostrum/cli.h>
#include <string>

namespace
{

const char closing[] = R"(
Additional help may be obtained by typing all or part of a
Command followed by a '?' (without the quotes)

In addition to the commands listed above the following
facilities are available :

  @filename  : Obey a file of commands
  ! Comment  : Insert a comment (mainly for command files)
)";

const char root_help[] = R"(probe
Talks to a module

    read address [format]
    Reads memory

    write address [values] /verify /key=code
    Writes memory

        pattern
        Writes a pattern

        extra
        <No Help>

    module
    Modules

        list
        Lists them

)";

const char write_help[] = R"(Command   : probe write  address [values] /verify /key=code
          : Writes memory

Parameter : address (Mandatory Integer parameter (Range -1-65535))
          : Where

Parameter : values (Optional(Prompting) List parameter (',' separated))
          : What

Qualifier : /verify (Mandatory)
          : Reads it back

Qualifier : /key=code (Mandatory)
          : Opens the lock
Value     : code (Mandatory Character parameter (4-8 chars))
          : The code

Qualifier : /as=unit (Optional)
          : <No Help>
Value     : unit (Optional Choice parameter)
          : Unit of the values
Choices   : byte     8 bits
          : quadruple_word <No Help>

Qualifier : /none (Unknown requirement)
          : No such requirement

Qualifier : /odd (Unknown requirement)
          : No such requirement

Command   : probe write pattern 
          : Writes a pattern

    extra
    <No Help>

)";

const char list_help[] = "Command   : probe module list \n"
                         "          : Lists them\n\n";

const char module_help[] = R"(module
Modules

    list
    Lists them

)";

const char read_help[] = R"(Command   : probe read  address [format]
          : Reads memory

Parameter : address (Mandatory Integer parameter (Range 0-65535))
          : Where

Parameter : format (Optional Choice parameter)
          : How it is shown
Choices   : hex      Base 16

)";

void do_nothing(intptr_t) {}

void print_help(intptr_t node)
{
    CLI_Help(reinterpret_cast<const CLI_NODE *>(node));
}

class CommandHelp : public CommandSession
{
protected:
    void SetUp() override
    {
        CommandSession::SetUp();
        CLI_IntParameter(read, "address", CLI_MANDATORY, 0, 65535, "Where");
        CLI_PARAMETER *format =
            CLI_ChoiceParameter(read, "format", CLI_OPTIONAL, "How it is shown");
        CLI_Choice(format, "hex", 16, "Base 16");

        CLI_IntParameter(write, "address", CLI_MANDATORY, -1, 65535, "Where");
        CLI_ListParameter(write, "values", CLI_PROMPTED, 1, ',', "What");
        CLI_Qualifier(write, "verify", CLI_MANDATORY, 0, "Reads it back");
        CLI_QUALIFIER *key = CLI_Qualifier(write, "key", CLI_MANDATORY, 0, "Opens the lock");
        CLI_CharParameter(key, "code", CLI_MANDATORY, 4, 9, "The code");
        CLI_QUALIFIER *as = CLI_Qualifier(write, "as", CLI_OPTIONAL, 0, "");
        CLI_PARAMETER *unit = CLI_ChoiceParameter(as, "unit", CLI_OPTIONAL, "Unit of the values");
        CLI_Choice(unit, "byte", 1, "8 bits");
        CLI_Choice(unit, "quadruple_word", 8, "");
        CLI_Qualifier(write, "none", CLI_OPTIONAL - 1, 0, "No such requirement");
        CLI_Qualifier(write, "odd", CLI_PROMPTED + 1, 0, "No such requirement");
        CLI_Node(write, "pattern", do_nothing, 0, "Writes a pattern");
        CLI_Node(write, "extra", nullptr, 0, "");
    }

    CLI_NODE *root = CLI_Node(nullptr, "probe", nullptr, 0, "Talks to a module");
    CLI_NODE *read = CLI_Node(root, "read", do_nothing, 0, "Reads memory");
    CLI_NODE *write = CLI_Node(root, "write", do_nothing, 0, "Writes memory");
    CLI_NODE *module = CLI_Node(root, "module", nullptr, 0, "Modules");
    CLI_NODE *list = CLI_Node(module, "list", do_nothing, 0, "Lists them");
};

TEST_F(CommandHelp, CommandsGetPagesAndPrefixesGetSummaries)
{
    const struct {
        const CLI_NODE *node;
        const char *expected;
    } rows[] = { { root, root_help },
                 { read, read_help },
                 { write, write_help },
                 { list, list_help },
                 { module, module_help } };
    for (const auto &[node, expected] : rows) {
        testing::internal::CaptureStdout();
        CLI_Help(node);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
    }
}

TEST_F(CommandHelp, HelpOnTheRootEndsWithTheFacilitiesWhileCommandsAreRead)
{
    CLI_Node(root, "help", print_help, reinterpret_cast<intptr_t>(root), "Helps");
    const std::string help = std::string(root_help) + "    help\n    Helps\n\n" + closing;
    EXPECT_EQ(session(root, "?\nhelp\n"), help + "\n> " + help);
}

TEST_F(CommandHelp, AProgramGetsAPageAboutItsArguments)
{
    CLI_NODE *tool = CLI_Node(nullptr, "tool", nullptr, 0, "Reads files");
    CLI_CharParameter(tool, "file", CLI_OPTIONAL, 1, 120, "The file");
    EXPECT_EQ(arguments(tool, { "?" }),
              "0Command   : tool  [file]\n          : Reads files\n\n"
              "Parameter : file (Optional Character parameter (1-119 chars))\n"
              "          : The file\n\n");
}

TEST_F(CommandHelp, AQuestionAtAPromptIsAnsweredAndThePromptComesAgain)
{
    EXPECT_EQ(session(root, "read\n?\n12\n"),
              "address = "
              "          : address (Mandatory Integer parameter (Range 0-65535))\n"
              "          : Where\n"
              "address = ");
}

} // namespace
