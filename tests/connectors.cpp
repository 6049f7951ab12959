// Connectors: records of the section, its views, pins, points and variable locations, how code names
// them, what the check says, and their Java text.
#include "tests/data_source.h"

namespace
{

constexpr const char *zero = "00 00 00 00 ";
constexpr const char *titles = " Name = {T}, Mnemonic = {M}\n";
constexpr const char *front = " VIEW front Name = {F}, Shell = {S}, Component = {C}\n";

std::string section(const std::string &body)
{
    return "PRIVATE\nDATA CONNECTOR X1\nBEGIN\n" + body + "END\n";
}

// What a section with the titles and a view becomes behind the records of these.
std::string records_of(const std::string &body)
{
    const std::string opening =
        std::string("|even 3:M.X1/CONNECTOR | 01 01 1:T/MESSAGE 1:M/MESSAGE ") + zero + "00 01 " +
        zero + "| 3:M.X1.front/VIEW 03 00 1:F/MESSAGE ->1 1:S/PICTURE 1:C/COMPONENT ";
    DataSource source(section(titles + (" Cable = 1\n" + std::string(front)) + body));
    EXPECT_EQ(source.messages, "") << body;
    const std::string record = source.record("X1");
    EXPECT_EQ(record.substr(0, opening.size()), opening) << body;
    EXPECT_EQ(record.substr(record.size() - 8), " | 02 00") << body;
    return record.substr(opening.size(), record.size() - 8 - opening.size());
}

// The line that a point has of which pin and point are given a text or none.
std::string line_of(const std::string &pin, const std::string &point)
{
    const std::string text =
        records_of(" PIN P\n" + (pin.empty() ? "" : "  Line = \"" + pin + "\"\n") +
                   "  POINT a Location = {L}, View = front" +
                   (point.empty() ? "" : ", Line = \"" + point + "\"") + ", Sex = MALE\n");
    return text.substr(text.size() - 5);
}

std::string messages_of(const std::string &body)
{
    return CompiledSource(section(titles + (front + body))).messages;
}

} // namespace

TEST(Connectors, TermsStandInTheOrderOfTheRecord)
{
    DataSource source("DATA CONNECTOR X1\n" +
                      section(" Helpscreen = {HELP}, Cable = 0x12345\n Location = {PLACE}\n" +
                              std::string(titles)));
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.record("X1"), "|even 0:M.X1/CONNECTOR | 01 01 1:T/MESSAGE 1:M/MESSAGE "
                                   "1:PLACE/PARAMETER 23 45 1:HELP/HELPSCREEN | 02 00");
}

TEST(Connectors, ViewsLeadToTheConnector)
{
    EXPECT_EQ(records_of(" view back\n  Component = {C2}, Name = {N2}\n  Shell = {S2}\n"
                         "  Flags = Fixed, Back\n  Flags = removable\n  Helpscreen = {H2}\n"),
              "| 3:M.X1.back/VIEW 0a 03 1:N2/MESSAGE ->1 1:S2/PICTURE 1:C2/COMPONENT "
              "1:H2/HELPSCREEN");
}

TEST(Connectors, PointsTakeFromTheirPinWhatTheyLack)
{
    EXPECT_EQ(
        records_of(" PIN P\n"
                   "  POINT a Location = {L}, View = front, Sex = FEMALE\n"
                   "  Name = \"pin\", SignalName = \"ground\", Line = \"5\"\n"
                   "  POINT b Name = {B/MESSAGE}, SignalName = {G}, Line = \"6H\"\n"
                   "   Location = {L2}\n   View = front\n   Sex = FEMALE\n   Sex = MALE\n"
                   " PIN \"1-a\"\n  POINT c Line = \"0\", Location = {L}, View = front, Sex = M\n"
                   " VARLOC here Location = {L}, Attributes = 7\n"),
        std::string("| 3:M.X1.P/PIN 04 00 \"pin\" ->1 "
                    "| 3:M.X1.P.a/POINT 05 01 \"pin\" ->3 ->2 1:L/PARAMETER \"ground\" 00 05 "
                    "| 3:M.X1.P.b/POINT 05 00 1:B/MESSAGE ->3 ->2 1:L2/PARAMETER 1:G/MESSAGE 00 86 "
                    "| 3:M.X1.1-a/PIN 04 00 ") +
            zero + "->1 | 3:M.X1.1-a.c/POINT 05 00 " + zero + "->6 ->2 1:L/PARAMETER " + zero +
            "00 00 | 3:M.X1.here/VARLOC 0b 00 1:T/MESSAGE 1:L/PARAMETER 00 07");
}

TEST(Connectors, LinesAreNumbersOfOneHalfOrTheOther)
{
    const struct {
        const char *pin, *point, *line;
    } rows[] = {
        { "", "128", "00 80" },     { "", "128H", "01 00" }, { "", "0H", "00 80" },
        { "7", "", "00 07" },       { "7", "0", "00 00" },   { "", "12Hand more", "00 8c" },
        { "", "0000012", "00 0c" },
    };
    for (const auto &row : rows)
        EXPECT_EQ(line_of(row.pin, row.point), row.line) << row.pin << " " << row.point;
    for (const char *bad :
         { "\"\"", "\"129\"", "\"129H\"", "\"4294967297\"", "\"H\"", "\"-1\"", "\" 1\"", "\"1h\"",
           "\"12 H\"", "{5}", "NULL", "\"99999999999999999999999999999999999999999\"" }) {
        const std::string line = "  Line = " + std::string(bad) + "\n";
        EXPECT_EQ(messages_of(" PIN P\n" + line), "8 3 Bad LINE number\n") << bad;
        EXPECT_EQ(messages_of(" PIN P\n  POINT a\n " + line +
                              "   Location = {L}, View = front, Sex = MALE\n"),
                  "9 3 Bad LINE number\n")
            << bad;
    }
}

// Without a cable no line is needed.
TEST(Connectors, APointWithoutALine)
{
    DataSource source(section(std::string(titles) + front +
                              " PIN P\n  POINT a Location = {L}, View = front, Sex = MALE\n"));
    EXPECT_EQ(source.messages, "");
    EXPECT_NE(source.record("X1").find(std::string("1:L/PARAMETER ") + zero + "ff ff |"),
              std::string::npos);
}

// Of a used module the sections themselves are known, not the items in them; views of any connector
// of the module can be linked to, and stand for themselves where a constant names them.
TEST(Connectors, ItemsNameOtherSectionsAndModules)
{
    std::ofstream(program::folder() / "parts.tl")
        << "MODULE PARTS\nDATA COMPONENT ECU\nDATA HELPSCREEN HELP\nDATA PICTURE SHELL\n"
           "DATA CONNECTOR X9\nCONST MESSAGE TITLE = {TITLE}\nCONST VIEW ELSEWHERE = {V}\n"
           "PRIVATE\nDATA CONNECTOR X9\nBEGIN\n VIEW top\nEND\n";
    setenv("TollInclude", program::folder().c_str(), 1);
    const std::string rest = " Sex = MALE Location = {L}, View = ";
    const std::string text =
        "USES PARTS\n" + section(std::string(titles) + front) + "CONST VIEW SAME = X1.front\n" +
        "CONST STRING LINE = \"7\"\nDATA CONNECTOR X2\nBEGIN\n Name = PARTS.TITLE\n"
        " Mnemonic = {M}, Helpscreen = PARTS.HELP\n"
        " VIEW front Name = {F}, Shell = PARTS.SHELL, Component = PARTS.ECU\n PIN P\n"
        "  Line = LINE\n  POINT a" +
        rest + "X1.front\n  POINT b" + rest +
        "front\n"
        "  POINT c" +
        rest + "SAME\nEND\n";
    DataSource source(text);
    EXPECT_EQ(source.messages, "");
    const std::string record = source.record({ "X1", "X2" });
    const size_t second = record.find("|even 3:M.X2");
    ASSERT_NE(second, std::string::npos) << record;
    const std::string unnamed = std::string("05 00 ") + zero + "->7 ";
    const std::string place = std::string(" 1:L/PARAMETER ") + zero + "00 07 | ";
    EXPECT_EQ(record.substr(second),
              "|even 3:M.X2/CONNECTOR | 01 01 1:TITLE/MESSAGE 1:M/MESSAGE 00 00 00 00 00 00 "
              "1:PARTS.HELP/HELPSCREEN | 3:M.X2.front/VIEW 03 00 1:F/MESSAGE ->5 "
              "1:PARTS.SHELL/PICTURE 1:PARTS.ECU/COMPONENT | 3:M.X2.P/PIN 04 00 00 00 00 00 ->5 "
              "| 3:M.X2.P.a/POINT " +
                  unnamed + "->2" + place + "3:M.X2.P.b/POINT " + unnamed + "->6" + place +
                  "3:M.X2.P.c/POINT " + unnamed + "->2" + place + "02 00");
    const std::string faulty =
        "  POINT a" + rest + "PARTS.X9.top\n" + "  POINT b" + rest + "PARTS.ELSEWHERE\n";
    EXPECT_EQ(
        CompiledSource("USES PARTS\n" + section(titles + (front + (" PIN P\n" + faulty)))).messages,
        "9 3 'PARTS.X9.top' - Unknown identifier\n9 3 Not a compile-time DATA constant\n"
        "9 3 CONSTANT expected here\n9 3 Value for 'VIEW' not specified\n"
        "10 3 Value for 'VIEW' not specified\n");
    unsetenv("TollInclude");
}

TEST(Connectors, CodeNamesItems)
{
    CompiledSource source(section(std::string(titles) + front +
                                  " PIN P\n  POINT a Location = {L}, View = front, Sex = MALE\n") +
                          "CONST POINT FIRST = X1.P.a\n"
                          "FUNCTION VIEW F()\nBEGIN\n RETURN X1.front\nEND\n"
                          "FUNCTION PIN G()\nBEGIN\n RETURN attr(FIRST, \"PIN\")\nEND\n"
                          "FUNCTION POINT H(INT P_a)\nBEGIN\n RETURN X1.P.a\nEND\n");
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.body("F"), "LCA 1:M.front/VIEW RET STOP");
    EXPECT_EQ(source.body("G"), "LCA 1:M.P.a/POINT 3 ATTR 5 RET STOP");
    EXPECT_EQ(source.text("H", TLC_TARGET_C), " return POINT_X1_P_a;\n");
    EXPECT_EQ(source.text("G", TLC_TARGET_JAVA), " return P_a.getPIN();\n");
}

TEST(Connectors, Messages)
{
    const std::string point = "  POINT a Location = {L}, View = front, Sex = MALE";
    const struct {
        std::string body;
        const char *messages;
    } rows[] = {
        { "", "" },
        { " Name = {U}, Mnemonic = {U}\n Cable = 1, Cable = 2\n",
          "7 3 Value already specified\n7 3 Value already specified\n" },
        { " VIEW b\n", "7 3 Value for 'NAME' not specified\n7 3 Value for 'SHELL' not specified\n"
                       "7 3 Value for 'COMPONENT' not specified\n" },
        { " VIEW b Name = {A}, Name = {B}, Shell = {S}, Component = {C}\n  Flags = F\n",
          "7 3 Value already specified\n8 3 Name 'F' is not unique\n" },
        { " VIEW 5 Name = {A}\n  Shell = {S}\n",
          "7 3 Identifier expected here\n8 3 New block in wrong place\n"
          "8 3 Name 'Shell' is not allowed here\n7 3 Value for 'NAME' not specified\n"
          "7 3 Value for 'SHELL' not specified\n7 3 Value for 'COMPONENT' not specified\n" },
        { " VIEW b Name = {A}, Shell = {S/VIEW}, Component = {C}\n",
          "7 3 Wrong type of DATA constant\n7 3 CONSTANT expected here\n"
          "7 3 Value for 'SHELL' not specified\n" },
        { " PIN front\n", "7 3 'front' already declared\n" },
        { " PIN P Name = \"5\"\n", "7 3 Unexpected characters or keyword\n" },
        { " PIN P\n  Name = \"5\", Name = \"6\"\n  END\n", "8 3 Value already specified\n" },
        { " POINT a\n",
          "7 3 Name 'POINT' is not allowed here\n7 3 Name 'a' is not allowed here\n" },
        { " PIN P\n  POINT a\n",
          "8 3 Value for 'LOCATION' not specified\n8 3 Value for 'VIEW' not specified\n"
          "8 3 No SEX specified for POINT\n" },
        { " Cable = 1\n PIN P\n" + point + "\n", "9 3 No LINE value specified\n" },
        { " PIN P\n" + point + "\n Cable = 1\n", "8 3 No LINE value specified\n" },
        { " Cable = 1\n PIN P\n" + point + "\n  Line = \"5\"\n", "" },
        { " PIN P\n" + point + ", Name = {N}\n", "8 3 Name 'Name' is not allowed here\n" },
        { " PIN P\n" + point + "\n   View = front\n", "9 3 Value already specified\n" },
        { " PIN P\n  POINT a Location = {L}, View = P, Sex =\n",
          "8 3 Wrong type of DATA constant\n8 3 CONSTANT expected here\n8 3 Missing Value\n"
          "8 3 Value for 'VIEW' not specified\n" },
        { " PIN P\n  POINT a Location = {L}, View = {V}, Sex = FEMALE\n",
          "8 3 Value for 'VIEW' not specified\n" },
        { " PIN P\n" + point + "\n" + point + "\n",
          "9 3 'P.a' already declared\n9 3 Value for 'LOCATION' not specified\n"
          "9 3 Value for 'VIEW' not specified\n9 3 No SEX specified for POINT\n" },
        { " PIN P123456789\n  POINT a1234567890123456789 Location = {L}, View = front, Sex = M\n",
          "" },
        { " PIN P1234567890\n  POINT a1234567890123456789 Location = {L}\n",
          "8 3 Identifier too long\n8 3 Identifier expected here\n"
          "8 3 Value for 'LOCATION' not specified\n8 3 Value for 'VIEW' not specified\n"
          "8 3 No SEX specified for POINT\n" },
    };
    for (const auto &row : rows)
        EXPECT_EQ(messages_of(row.body), row.messages) << row.body;
    EXPECT_EQ(CompiledSource(section("")).messages,
              "4 3 Value for 'NAME' not specified\n4 3 Value for 'MNEMONIC' not specified\n");
}

// Links have 16 bits.
TEST(Connectors, TooManyItems)
{
    const auto messages_with = [](int pins) {
        std::string body;
        for (int i = 0; i < pins; i++)
            body += " PIN \"" + std::to_string(i) + "\"\n  Name = NULL\n";
        DataSource source(section(titles + body));
        TLCG_Initialise();
        const std::string path = (program::folder() / "large.kob").string();
        EXPECT_EQ(TLCG_GenerateKOBCode(source.module, 0, path.c_str(), 0, "test"), 0);
        EXPECT_EQ(std::filesystem::exists(path), source.messages.empty());
        return std::string(source.messages);
    };
    // Behind the 22 bytes of the connector a pin has 8, and the link stands on the seventh of them.
    constexpr int most = (32768 - 22 - 6) / 8 + 1;
    EXPECT_EQ(messages_with(most), "");
    EXPECT_EQ(messages_with(most + 1), "0 4 Jump out of range\n");
}

TEST(Connectors, AreListed)
{
    CompiledSource source(section(std::string(titles) + front));
    testing::internal::CaptureStdout();
    TLS_PrintBlock("ALL", TLIV_GetFunctionBlock(source.find("X1")), 0);
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "ALL\n    CONNECTOR FUNCTION\n    END CONNECTOR FUNCTION\nEND ALL\n");
}

// The components of views come first, and their parents are set when all items are there.
TEST(Connectors, AreConstructedInJava)
{
    DataSource source(
        "PRIVATE\nFORWARD DATA COMPONENT PARENT\nFORWARD DATA COMPONENT LATE\n"
        "FORWARD DATA COMPONENT NEVER\n"
        "DATA CONNECTOR class\nBEGIN\n Name = NULL, Mnemonic = NULL, Cable = 70000\n"
        " VIEW a Name = NULL, Shell = NULL, Component = LATE, Flags = Back\n"
        " VIEW b Name = NULL, Shell = NULL, Helpscreen = NULL, Component = LATE\n"
        " VIEW c Name = NULL, Shell = NULL, Component = NEVER\n"
        " PIN 1\n PIN P\n  SignalName = \"s\", Name = \"n\", Line = \"1H\"\n"
        "  POINT 2\n  POINT a View = a, Location = NULL, Sex = FEMALE\n"
        "  POINT \"3\" Name = NULL, SignalName = NULL, Line = \"4\"\n"
        "   View = a, Location = NULL, Sex = MALE\n"
        " VARLOC d Location = NULL, Attributes = 2\nEND\n"
        "DATA COMPONENT PARENT\nBEGIN\n Name = NULL\nEND\n"
        "DATA COMPONENT LATE\nBEGIN\n Name = NULL, Parent = PARENT\n VARLOC e Location = "
        "NULL\nEND\n"
        "DATA COMPONENT OTHER\nBEGIN\n Name = NULL, Parent = OTHER\nEND\n");
    EXPECT_EQ(
        source.java({ "class", "PARENT", "OTHER" }),
        "  public static Connector class_;\n"
        "  public static View a;\n"
        "  public static View b;\n"
        "  public static View c;\n"
        "  public static Pin P;\n"
        "  public static Point P_a;\n"
        "  public static Point P_3;\n"
        "  public static Varloc d;\n"
        "  public static Component PARENT;\n"
        "  public static Component OTHER;\n"
        "    class_ = new Connector(null, null, null, 70000, null);\n"
        "    LATE = new Component(null, 0);\n"
        "    e = new Varloc(null, null, 0);\n"
        "    e.setParent(LATE);\n\n"
        "    a = new View(null, 2, null, LATE, null);\n"
        "    a.setParent(class_);\n"
        "    class_.addView(a);\n\n"
        "    b = new View(null, 0, null, LATE, null);\n"
        "    b.setParent(class_);\n"
        "    class_.addView(b);\n\n"
        "    c = new View(null, 0, null, (Data) toll_item(\"COMPONENT\", \"M.NEVER\"), null);\n"
        "    c.setParent(class_);\n"
        "    class_.addView(c);\n\n"
        "    P = new Pin(\"n\", 0);\n\n"
        "    P_a = new Point(\"n\", 1, null, \"s\", 129);\n"
        "    P_a.setParent(P);\n"
        "    P_3 = new Point(null, 0, null, null, 4);\n"
        "    P_3.setParent(P);\n"
        "    d = new Varloc(null, null, 2);\n"
        "    d.setParent(class_);\n\n"
        "    PARENT = new Component(null, 0);\n"
        "    OTHER = new Component(null, 0);\n"
        "    OTHER.setParent(OTHER);\n\n");
}
