// Help screens: words and references of full screens and popups, what is refused, the listing, and
// how code names them.
#include "tests/data_source.h"

namespace
{

std::string section(const std::string &body)
{
    return "PRIVATE\nDATA HELPSCREEN H\nBEGIN\n" + body + "END\n";
}

std::string messages_of(const std::string &body)
{
    return CompiledSource(section(body)).messages;
}

} // namespace

TEST(HelpScreens, Records)
{
    const struct {
        const char *body, *record;
    } rows[] = {
        { "", "" },
        { " HelpScreen = {NEXT}\n Title = {T}\n",
          " 10 00 00 00 1:T/MESSAGE 40 00 00 00 1:NEXT/HELPSCREEN" },
        { " MESSAGE {A}\n PICTURE {B}\n message NULL, Flags = 1\n {A}\n {A/MESSAGE}, Help = {H2}\n",
          " |even 20 00 00 00 1:A/MESSAGE |even 30 00 00 00 1:B/PICTURE "
          "|even 20 00 00 01 00 00 00 00 |even 20 00 00 00 1:A/MESSAGE "
          "|even 60 00 00 00 1:H2/HELPSCREEN 20 00 00 00 1:A/MESSAGE" },
        // The attributes of an item go on in deeper statements, those of the screen behind them.
        { " PICTURE {B}, F = 0xFFFFFFF,\n   Flags = 1, Help = H\n   Flags = 0x100\n"
          " Title = {T}\n {A}\n   Flags = 0x10, Flags = 0x8000000\n",
          " 10 00 00 00 1:T/MESSAGE |even 60 00 00 00 1:M.H/HELPSCREEN 3f ff ff ff 1:B/PICTURE "
          "|even 28 00 00 10 1:A/MESSAGE" },
        { " Type = Popup\n", " 50 00 00 00 00 00 00 00" },
        { " {A}\n Type = popup\n Title = {T}\n PICTURE {B}\n HelpScreen = {H2}\n",
          " 50 00 00 00 1:T/MESSAGE |even 20 00 00 00 1:A/MESSAGE |even 30 00 00 00 1:B/PICTURE" },
        { " PICTURE {B}, Help = {H2}\n {A}\n Ty = P\n",
          " 50 00 00 00 00 00 00 00 |even 60 00 00 00 1:H2/HELPSCREEN 30 00 00 00 1:B/PICTURE "
          "|even 20 00 00 00 1:A/MESSAGE" },
        { " {A}\n {A}\n Type = Popup\n Type = Fullscreen\n",
          " |even 20 00 00 00 1:A/MESSAGE |even 20 00 00 00 1:A/MESSAGE" },
    };
    for (const auto &row : rows) {
        DataSource source(section(row.body));
        EXPECT_EQ(source.messages, "") << row.body;
        EXPECT_EQ(source.record("H"),
                  "|even 3:M.H/HELPSCREEN" + std::string(row.record) + " |even 00 00 00 00")
            << row.body;
    }
}

TEST(HelpScreens, TextsStandInTheModule)
{
    DataSource source("DATA HELPSCREEN H\nPRIVATE\nDATA HELPSCREEN H\nBEGIN\n \"one\"\n"
                      " MESSAGE \"two\", Flags = 2\n  END\n");
    EXPECT_EQ(source.messages, "6 2 'STRING' coerced to a MESSAGE - further warnings in this "
                               "category suppressed\n");
    EXPECT_EQ(source.record("H"), "|even 0:M.H/HELPSCREEN |even 20 00 00 00 \"one\" "
                                  "|even 20 00 00 02 \"two\"");
}

TEST(HelpScreens, Messages)
{
    const char *popup = "4 3 Incorrect items for a Popup HELPSCREEN\n";
    const struct {
        const char *body;
        std::string messages;
    } rows[] = {
        { " Title = {T}\n Type = Popup\n Title = {U}\n", "7 3 Value already specified\n" },
        { " T = {T}\n", "5 3 Name 'T' is not unique\n" },
        { " Type = Popup, Title = {T}\n", "5 3 Name 'Title' is not allowed here\n" },
        { " Flags = 1\n", "5 3 Name 'Flags' is not allowed here\n" },
        { " PICTURE {B}, Title = {T}\n", "5 3 Name 'Title' is not allowed here\n" },
        { " PICTURE {B}, Help = {H2}\n  Help = {H3}\n", "6 3 Value already specified\n" },
        { " PICTURE {B}, Flags = 0xFFFFFFF\n", "" },
        { " PICTURE {B}, Flags = 0x10000000\n", "5 3 HELP qualifiers out of range\n" },
        { " PICTURE {B}\n  Flags = -1\n", "6 3 HELP qualifiers out of range\n" },
        // What shows nothing is no item, and what stands behind it is not read.
        { " Type = Popup\n {A}\n MESSAGE {B/PICTURE}, Flags = 1\n",
          "7 3 Wrong type of DATA constant\n7 3 CONSTANT expected here\n" },
        { " PICTURE\n", "5 3 Missing expression\n5 3 CONSTANT expected here\n" },
        { " Type = Popup\n {A}\n {B}\n", popup },
        { " Type = Popup\n PICTURE {A}\n {B}\n PICTURE {B}\n", popup },
        { " Type = Popup\n {A}, Flags = 1\n", popup },
        { " Type = Popup\n {A}\n   Flags = 1\n", popup },
    };
    for (const auto &row : rows)
        EXPECT_EQ(messages_of(row.body), row.messages) << row.body;
}

// An END ends a section wherever it stands, and is an item of a popup that it stands in.
TEST(HelpScreens, Ends)
{
    const std::string open = "PRIVATE\nDATA HELPSCREEN H\nBEGIN\n {A}\n";
    const std::string item = "|even 3:M.H/HELPSCREEN |even 20 00 00 00 1:A/MESSAGE";
    EXPECT_EQ(DataSource(open + " END\n").record("H"), item + " |even 00 00 00 00");
    EXPECT_EQ(DataSource(open + "  END\n").record("H"), item);
    EXPECT_EQ(CompiledSource(open + " Type = Popup\n END\n").messages,
              "4 3 Incorrect items for a Popup HELPSCREEN\n");
}

TEST(HelpScreens, Listing)
{
    CompiledSource source(section(" {A}\n   Flags = 7\n PICTURE {P}\n"));
    testing::internal::CaptureStdout();
    TLS_PrintBlock("ALL", TLIV_GetFunctionBlock(source.find("H")), 0);
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "ALL\n  HELP FUNCTION\n"
              "    Help - Code=20000007\n    Reference\n      {HEAD}(MESSAGE/4) <DATA LITERAL> A\n"
              "    Help - Code=30000000\n    Reference\n      {HEAD}(PICTURE/4) <DATA LITERAL> P\n"
              "  END HELP FUNCTION\n  Help - Code=0000\n  Reference\nEND ALL\n");
}

// In Java a screen is no object: it is looked up by its name, in the module and from others.
TEST(HelpScreens, CodeNamesThem)
{
    DataSource source(section(" Title = {T}\n") +
                      "DATA CONNECTOR X1\nBEGIN\n Name = NULL, Mnemonic = NULL, Helpscreen = H\n"
                      "END\nFUNCTION HELPSCREEN F()\nBEGIN\n RETURN H\nEND\n"
                      "FUNCTION MESSAGE G(HELPSCREEN SHOWN)\nBEGIN\n"
                      " RETURN attr(SHOWN, \"TITLE\")\nEND\n");
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.body("F"), "LCA 1:M.H/HELPSCREEN RET STOP");
    EXPECT_EQ(source.body("G"), "0 LLW 0 ATTR 8 RET STOP");
    EXPECT_EQ(source.text("F", TLC_TARGET_C), " return HELPSCREEN_H;\n");
    EXPECT_EQ(source.text("F", TLC_TARGET_JAVA),
              " return (Data) toll_item(\"HELPSCREEN\", \"M.H\");\n");
    EXPECT_EQ(source.java({ "H" }), "");
    EXPECT_EQ(source.java({ "X1" }), "  public static Connector X1;\n"
                                     "    X1 = new Connector(null, null, null, 0, "
                                     "(Data) toll_item(\"HELPSCREEN\", \"M.H\"));\n");
}
