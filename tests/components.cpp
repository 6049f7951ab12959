// Components and variable locations: their records, how code names them, what the check says.
#include "tests/data_source.h"

namespace
{

std::string section(const std::string &body)
{
    return "PRIVATE\nDATA COMPONENT PUMP\nBEGIN\n" + body + "END\n";
}

std::string messages_of(const std::string &body)
{
    return CompiledSource(section(body)).messages;
}

constexpr const char *title = " Name = {P/MESSAGE}\n";
constexpr const char *zero = "00 00 00 00 ";

} // namespace

TEST(Components, TermsStandInTheOrderOfTheRecord)
{
    DataSource source(section(" Helpscreen = {HELP}, Location = {PLACE}, Parent = {ENGINE}\n" +
                              std::string(title)));
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.record("PUMP"),
              "|even 3:M.PUMP/COMPONENT | 06 00 1:P/MESSAGE 1:ENGINE/COMPONENT "
              "1:PLACE/PARAMETER 1:HELP/HELPSCREEN | 02 00");
}

TEST(Components, VariableLocationsFollow)
{
    DataSource source("DATA COMPONENT PUMP\n" +
                      section(" VARLOC left Name = {L/MESSAGE}, Location = {A}, Att = 0x12345\n"
                              " varloc right\n  Location = {B}\n  Attributes = -1\n" +
                              std::string(title)));
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.record("PUMP"),
              std::string("|even 0:M.PUMP/COMPONENT | 06 00 1:P/MESSAGE ") + zero + zero + zero +
                  "| 0:M.PUMP.left/VARLOC 0b 00 1:L/MESSAGE 1:A/PARAMETER 23 45 "
                  "| 0:M.PUMP.right/VARLOC 0b 00 1:P/MESSAGE 1:B/PARAMETER ff ff | 02 00");
}

TEST(Components, CodeNamesVariableLocations)
{
    const std::string text =
        section(" VARLOC left Location = {A}\n" + std::string(title)) +
        "FUNCTION VARLOC F()\nBEGIN\n RETURN PUMP.left\nEND\n"
        "FUNCTION INT G()\nBEGIN\n RETURN attr(PUMP.left, \"ATTRIBUTES\")\nEND\n";
    CompiledSource source(text);
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.body("F"), "LCA 1:M.left/VARLOC RET STOP");
    EXPECT_EQ(source.body("G"), "LCA 1:M.left/VARLOC 19 ATTR 11 RET STOP");
}

// Names keep the sections of a stream only as long as it lives.
TEST(Components, AModuleIsGeneratedAnyNumberOfTimes)
{
    CompiledSource source(section(" VARLOC left Location = {A}\n" + std::string(title)));
    TLCG_Initialise();
    const std::string path = (program::folder() / "again.kob").string();
    for (int i = 0; i < 2; i++) {
        ASSERT_EQ(TLCG_GenerateKOBCode(source.module, 0, path.c_str(), 0, "test"), 0);
        TLI_IDENTIFIER *left = source.find("PUMP.left");
        ASSERT_NE(left, nullptr);
        EXPECT_EQ(TLI_IdentifierPSect(left), nullptr);
        EXPECT_EQ(TLI_IdentifierPSect(source.find("PUMP")), nullptr);
    }
}

TEST(Components, ASectionIsParsedAgainByItself)
{
    CompiledSource source(section(" VARLOC left Location = {A}\n" + std::string(title)) +
                          "FUNCTION VARLOC F()\nBEGIN\n RETURN PUMP.left\nEND\n");
    for (const char *name : { "PUMP", "F" }) {
        TLP_SECTION *again = TLP_FindSection(source.module, name);
        TLP_DelSectionIdentifier(source.module, again);
        EXPECT_EQ(source.find("PUMP.left") == nullptr, std::string(name) == "PUMP");
        TLP_ParseSection(source.module, again);
    }
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.body("F"), "LCA 1:M.left/VARLOC RET STOP");
}

TEST(Components, Messages)
{
    const struct {
        std::string body;
        const char *messages;
    } rows[] = {
        { "", "4 3 Value for 'NAME' not specified\n" },
        { " Parent = {E}\n", "4 3 Value for 'NAME' not specified\n" },
        { title, "" },
        { std::string(title) + " N = {Q}\n", "6 3 Value already specified\n" },
        { std::string(title) + " Parent = {E/PIN}\n",
          "6 3 Wrong type of DATA constant\n6 3 CONSTANT expected here\n" },
        { std::string(title) + " STATE \"a\", 1, 2\n",
          "6 3 Name 'STATE' is not allowed here\n6 3 Name 'a' is not allowed here\n" },
        { std::string(title) + " VARLOC a\n", "6 3 Value for 'LOCATION' not specified\n" },
        { std::string(title) + " VARLOC a Location = {X}\n VARLOC a Location = {Y}\n",
          "7 3 'a' already declared\n7 3 Value for 'LOCATION' not specified\n" },
        { std::string(title) + " VARLOC 5 Location = {X}\n",
          "6 3 Identifier expected here\n6 3 Value for 'LOCATION' not specified\n" },
        { std::string(title) + " VARLOC a Attr = 1, Attr = 2, Location = {X}\n",
          "6 3 Value already specified\n" },
        { std::string(title) + " VARLOC a\n  Location = {X}, Parent = {E}\n",
          "7 3 Name 'Parent' is not allowed here\n" },
        { std::string(title) + " VARLOC a Location = {X}\n  VARLOC b\n",
          "7 3 Name 'VARLOC' is not allowed here\n7 3 Name 'b' is not allowed here\n" },
        { std::string(title) + " VARLOC a\n  Location = {X}\n  END\n", "" },
    };
    for (const auto &row : rows)
        EXPECT_EQ(messages_of(row.body), row.messages) << row.body;
}

TEST(Components, ItemsWithoutANameGiveNoRecord)
{
    DataSource source(section(std::string(title) + " VARLOC 5\n Parent = {E}\n"));
    EXPECT_EQ(source.record("PUMP"),
              std::string("|even 3:M.PUMP/COMPONENT | 06 00 1:P/MESSAGE 1:E/COMPONENT ") + zero +
                  zero + "| 02 00");
}

TEST(Components, AreConstructedInJava)
{
    DataSource source(
        "PRIVATE\nCONST MESSAGE TITLE = \"Engine\"\n"
        "DATA COMPONENT ENGINE\nBEGIN\n Name = TITLE, Helpscreen = NULL\nEND\n"
        "DATA COMPONENT class\nBEGIN\n Name = TITLE\n Parent = ENGINE\n"
        " VARLOC left Location = NULL\n"
        " VARLOC 3\n VARLOC right\n  Location = NULL, Attributes = -3, Name = NULL\nEND\n"
        "DATA COMPONENT FULL\nBEGIN\n Name = NULL\n Location = NULL\n"
        " Helpscreen = NULL\nEND\n");
    EXPECT_EQ(source.java({ "ENGINE", "class" }),
              "  public static Component ENGINE;\n"
              "  public static Component class_;\n"
              "  public static Varloc left;\n"
              "  public static Varloc right;\n"
              "    ENGINE = new Component(\"Engine\", 0, null);\n"
              "    class_ = new Component(\"Engine\", 0);\n"
              "    left = new Varloc(\"Engine\", null, 0);\n"
              "    left.setParent(class_);\n\n"
              "    right = new Varloc(null, null, -3);\n"
              "    right.setParent(class_);\n\n"
              "    class_.setParent(ENGINE);\n\n");
    EXPECT_EQ(source.java({ "FULL" }), "  public static Component FULL;\n"
                                       "    FULL = new Component(null, 0, null, null);\n");
}

TEST(Components, CNamesItemsWithTheirSection)
{
    CompiledSource source(section(" VARLOC left Location = {A}\n" + std::string(title)) +
                          "FUNCTION VARLOC F(VAR INT left)\nBEGIN\n RETURN PUMP.left\nEND\n");
    EXPECT_EQ(source.text("F", TLC_TARGET_C), " return VARLOC_PUMP_left;\n");
}

TEST(Components, JavaNamesItemsAsValues)
{
    CompiledSource source(section(" VARLOC left Location = {A}\n" + std::string(title)) +
                          "FUNCTION VARLOC F()\nBEGIN\n RETURN PUMP.left\nEND\n");
    EXPECT_EQ(source.text("F", TLC_TARGET_JAVA), " return left;\n");
}

// Help screens have no class in Java, and a section without a body no field.
TEST(Components, JavaLooksUpWhatHasNoField)
{
    CompiledSource source("PRIVATE\nFORWARD DATA HELPSCREEN HELP\nFORWARD DATA COMPONENT NEVER\n"
                          "FUNCTION HELPSCREEN F()\nBEGIN\n RETURN HELP\nEND\n"
                          "FUNCTION COMPONENT G()\nBEGIN\n RETURN NEVER\nEND\n");
    EXPECT_EQ(source.text("F", TLC_TARGET_JAVA),
              " return (Data) toll_item(\"HELPSCREEN\", \"M.HELP\");\n");
    EXPECT_EQ(source.text("G", TLC_TARGET_JAVA),
              " return (Data) toll_item(\"COMPONENT\", \"M.NEVER\");\n");
}
