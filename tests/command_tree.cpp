/*
 * The tree of commands, and the values that an action reads.
 */
#include "command_session.h"

#include <gtest/gtest.h>
#include <ostrum/cli.h>
#include <string>

namespace
{

// A tool's own arguments: parameters of every kind, and qualifiers with and without a value.
class CommandTree : public CommandSession
{
protected:
    CLI_NODE *root = CLI_Node(nullptr, "tool", nullptr, 0, "");
    CLI_PARAMETER *name = CLI_CharParameter(root, "name", CLI_OPTIONAL, 2, 8, "");
    CLI_PARAMETER *count = CLI_IntParameter(root, "count", CLI_OPTIONAL, -5, 999999999, "");
    CLI_PARAMETER *format = CLI_ChoiceParameter(root, "format", CLI_OPTIONAL, "");
    CLI_PARAMETER *files = CLI_ListParameter(root, "files", CLI_OPTIONAL, 1, ';', "");
    CLI_QUALIFIER *brief = CLI_Qualifier(root, "BRIEF", CLI_OPTIONAL, 0, "");
    CLI_QUALIFIER *depth = CLI_Qualifier(root, "DEPTH", CLI_OPTIONAL, 0, "");

    CommandTree()
    {
        CLI_Choice(format, "hex", 16, "");
        CLI_Choice(format, "decimal", 10, "");
        CLI_IntParameter(depth, "levels", CLI_MANDATORY, 0, 9, "");
    }
};

const char *text_of(intptr_t value)
{
    return reinterpret_cast<const char *>(value);
}

int32_t join(void *context, const char *value)
{
    *static_cast<std::string *>(context) += "<" + std::string(value) + ">";
    return 0;
}

TEST_F(CommandTree, ConstructorsCutNamesAndFixTheSettingsOfEachKind)
{
    static const char help[] = "says it all";
    CLI_Initialise();
    CLI_NODE *node = CLI_Node(nullptr, "an_odd_name_of_33_characters_____", nullptr, 0, help);
    EXPECT_STREQ(node->name, "an_odd_name_of_33_characters___");
    EXPECT_EQ(node->help, help) << "help is the client's, not copied";
    EXPECT_STREQ(CLI_Node(node, nullptr, nullptr, 0, nullptr)->name, "");
    EXPECT_EQ(CLI_Qualifier(node, "q", CLI_PROMPTED, 6, "")->exclusion_mask, 6u);
    EXPECT_EQ(CLI_ListParameter(node, "l", CLI_MANDATORY, 3, ',', "")->size, 0);
    const CLI_PARAMETER *integer = CLI_IntParameter(node, "i", CLI_MANDATORY, -7, 70, "");
    EXPECT_EQ(integer->minimum_length, 1);

    CLI_PARAMETER *choice = CLI_ChoiceParameter(node, "c", CLI_MANDATORY, "");
    EXPECT_EQ(choice->minimum_length, 1);
    EXPECT_EQ(choice->size, 0);
    static const struct {
        const char *name;
        int32_t size;
    } choices[] = { { "red", 4 }, { "twelve_chars", 13 }, { "green", 13 } };
    for (const auto &[name, size] : choices) {
        CLI_Choice(choice, name, 1, "");
        EXPECT_EQ(choice->size, size) << name;
    }
}

TEST_F(CommandTree, AnActionReadsItsParametersInOrder)
{
    ASSERT_EQ(arguments(root, { "pump", "-5", "dec", "a, b;c" }), "1");
    intptr_t value = 0;
    for (int round = 0; round < 2; round++) {
        EXPECT_EQ(CLI_GetParameter(&value), 1);
        EXPECT_STREQ(text_of(value), "pump");
        EXPECT_EQ(CLI_GetParameter(&value), 1);
        EXPECT_EQ(value, -5);
        EXPECT_EQ(CLI_GetParameter(&value), 1);
        EXPECT_EQ(value, 10);
        EXPECT_EQ(CLI_GetParameter(nullptr), 1);
        EXPECT_EQ(CLI_ResetCommand(), root);
    }
    for (int skipped = 0; skipped < 3; skipped++)
        CLI_GetParameter(nullptr);
    EXPECT_EQ(CLI_GetParameter(&value), 1);
    EXPECT_STREQ(text_of(value), "a, b;c") << "a list is read as one text as well";
}

TEST_F(CommandTree, ParametersLeftEmptyAreReadAndLeaveTheValueAlone)
{
    ASSERT_EQ(arguments(root, { "pump", "12", "hex", "f" }), "1");
    ASSERT_EQ(arguments(root, { "valve" }), "1"); // the values of the line before are gone
    intptr_t value = 0;
    EXPECT_EQ(CLI_GetParameter(&value), 1);
    for (int empty = 0; empty < 2; empty++) {
        value = 77;
        EXPECT_EQ(CLI_GetParameter(&value), 0);
        EXPECT_EQ(value, 77);
    }
    std::string values;
    EXPECT_EQ(CLI_AllListParameterValues(join, &values), 0);
    EXPECT_EQ(values, "");
}

TEST_F(CommandTree, NumbersOfMoreThanNineCharactersAreTooLong)
{
    EXPECT_EQ(arguments(root, { "pump", "999999999" }), "1");
    intptr_t value = 0;
    CLI_GetParameter(nullptr);
    EXPECT_EQ(CLI_GetParameter(&value), 1);
    EXPECT_EQ(value, 999999999);
    EXPECT_NE(arguments(root, { "pump", "0999999999" }).find("** Field is too long\n"),
              std::string::npos);
}

TEST_F(CommandTree, QualifiersAreFoundByTheirExactName)
{
    intptr_t value = 77;
    EXPECT_EQ(CLI_GetQualifier("BRIEF", &value), 0) << "there is no command yet";
    ASSERT_EQ(arguments(root, { "/br", "/depth=3", "pump" }), "1");
    EXPECT_EQ(CLI_GetQualifier("BRIEF", &value), 1);
    EXPECT_EQ(value, 77) << "it has no value";
    EXPECT_EQ(CLI_GetQualifier("DEPTH", nullptr), 1);
    EXPECT_EQ(CLI_GetQualifier("DEPTH", &value), 1);
    EXPECT_EQ(value, 3);
    for (const char *wrong : { "brief", "BRIE", "BRIEFS", "" })
        EXPECT_EQ(CLI_GetQualifier(wrong, nullptr), 0) << wrong;
    ASSERT_EQ(arguments(root, { "pump" }), "1");
    EXPECT_EQ(CLI_GetQualifier("BRIEF", nullptr), 0);
    EXPECT_EQ(CLI_GetQualifier("DEPTH", &value), 0);
    EXPECT_EQ(value, 3);

    depth->seen = 1; // as after a prompt for it that was left empty
    EXPECT_EQ(CLI_GetQualifier("DEPTH", &value), 1);
    EXPECT_EQ(value, 3);
}

TEST_F(CommandTree, ListsAreTakenApart)
{
    const std::string long_value(511, 'x');
    const std::string longer = long_value + "yz";
    const struct {
        char separator;
        std::string text, values;
    } rows[] = {
        { ';', "a, b;c", "<a, b><c>" },
        { ',', "a, b;c", "<a><b;c>" },
        { ',', " ,\t, a b  ,, ", "<a b  >" },
        { ',', "a", "<a>" },
        { ',', "a,", "<a>" },
        { ' ', "a  b c ", "<a><b><c>" },
        { ',', " , ", "" },
        { '\0', " a,b ", "<a,b >" },
        { ',', long_value + ",b", "<" + long_value + "><b>" },
        { ',', longer + ",b", "<" + long_value + "><b>" },
    };
    for (const auto &[separator, text, values] : rows) {
        CLI_NODE *node = CLI_Node(nullptr, "n", nullptr, 0, "");
        CLI_PARAMETER *list = CLI_ListParameter(node, "l", CLI_OPTIONAL, 0, separator, "");
        std::string typed = text;
        list->text = typed.data();
        CLI_SetCommand(node);
        std::string got;
        EXPECT_EQ(CLI_AllListParameterValues(join, &got), 0);
        EXPECT_EQ(got, values) << "'" << text << "' separated by '" << separator << "'";
        EXPECT_EQ(typed, text);
    }
}

TEST_F(CommandTree, AChoiceAddedLaterKeepsTheTextAndGetsRoom)
{
    ASSERT_EQ(arguments(root, { "pump", "1", "decimal" }), "1");
    CLI_Choice(format, "hexadecimal_and_octal", 8, "");
    EXPECT_STREQ(format->text, "decimal");
    ASSERT_EQ(arguments(root, { "pump", "1", "hexadecimal_and_octal" }), "1");
    EXPECT_EQ(format->number, 8);
}

TEST_F(CommandTree, AskingForMoreThanThereIsEndsTheProcess)
{
    ASSERT_EQ(arguments(root, { "pump" }), "1");
    for (int taken = 0; taken < 4; taken++)
        CLI_GetParameter(nullptr);
    EXPECT_EXIT(CLI_GetParameter(nullptr), testing::ExitedWithCode(1),
                "CLI_GetParameter : Too many requests");
    EXPECT_EXIT(CLI_AllListParameterValues(join, nullptr), testing::ExitedWithCode(1),
                "CLI_AllListParameterValues : Too many requests");
}

} // namespace
