// Converters and waveforms: the bytes of their records, and what the parser and the check say.
#include "tests/data_source.h"

namespace
{

constexpr const char *zero = "00 00 00 00 ";

std::string section(const char *kind, const std::string &body)
{
    return std::string("PRIVATE\nDATA ") + kind + " X\nBEGIN\n" + body + "END\n";
}

std::string record_of(const char *kind, const std::string &body)
{
    DataSource source(section(kind, body));
    EXPECT_EQ(source.messages, "") << body;
    return source.record("X");
}

std::string messages_of(const char *kind, const std::string &body)
{
    return CompiledSource(section(kind, body)).messages;
}

// Text of a converter's record: header, terms and numbers as given, counts of states and points.
std::string converter_record(const std::string &header, const std::string &numbers,
                             const std::string &tail)
{
    return "|even 3:M.X/CONVERTER | 07 " + header + numbers + tail;
}

// Statements of one sample each.
std::string samples(int count, const char *sample)
{
    std::string text;
    for (int i = 0; i < count; i++)
        text += std::string(" ") + sample + "\n";
    return text;
}

} // namespace

TEST(Converters, AnEmptyOneHasItsDefaults)
{
    EXPECT_EQ(record_of("CONVERTER", ""), converter_record(std::string("00 00 00 ") + zero + zero,
                                                           "00 00 00 00 00 00 00 01 00 00 00 01 ",
                                                           "00 00 00 00 ff 00 00 00 00 00"));
}

TEST(Converters, EveryFieldHasItsPlace)
{
    EXPECT_EQ(record_of("CONVERTER", " OldType = RESISTANCE, QuantityType = TEMPERATURE\n"
                                     " Name = {TITLE/MESSAGE}, Next = {LAST}\n"
                                     " Offset = -40, Multiplier = 0x12345678, Divisor = -3\n"
                                     " TransferLibrary = {CURVES}, FuncId = 255\n"
                                     " Flags = Invert, SwapLowerBytes\n Flags = Reciprocal\n"),
              converter_record("07 05 02 1:TITLE/MESSAGE 1:LAST/CONVERTER ",
                               "ff ff ff d8 12 34 56 78 ff ff ff fd ",
                               "1:CURVES/BINARY_DATA ff 00 00 00 00 00"));
}

TEST(Converters, StatesAndPointsStandInTheOrderOfTheSource)
{
    EXPECT_EQ(record_of("CONVERTER",
                        " OldType = VOLTAGE, QuantityType = TEMPERATURE\n"
                        " MAP -1V, 0C\n STATE \"off\", 3, 4V\n MAP 2V, 7C\n MAP 2V, 5C\n"
                        " state NULL, -1, 2\n"),
              converter_record(
                  std::string("00 05 01 ") + zero + zero, "00 00 00 00 00 00 00 01 00 00 00 01 ",
                  "00 00 00 00 ff 00 00 02 00 03 "
                  "00 00 00 03 00 00 0f a0 \"off\" ff ff ff ff 00 00 00 02 00 00 00 00 "
                  "ff ff fc 18 00 00 00 00 00 00 07 d0 00 00 00 07 00 00 07 d0 00 00 00 05"));
}

TEST(Converters, LaterNumbersReplaceEarlierOnes)
{
    EXPECT_EQ(record_of("CONVERTER", " Offset = 1 , Offset = 2\n FuncId = 9, FuncId = 0\n"
                                     " Flags = NoInvert\n TransferLibrary = {CURVES}\n"),
              converter_record(std::string("00 00 00 ") + zero + zero,
                               "00 00 00 02 00 00 00 01 00 00 00 01 ",
                               "1:CURVES/BINARY_DATA 00 00 00 00 00 00"));
}

TEST(Converters, TermsAreTextsConstantsOrOtherSections)
{
    DataSource source("PRIVATE\nCONST MESSAGE TITLE = \"scale\"\n"
                      "DATA CONVERTER Y\nBEGIN\nEND\n"
                      "DATA CONVERTER X\nBEGIN\n Name = TITLE, Next = Y\nEND\n",
                      TLP_FLAG_STRICT);
    EXPECT_EQ(source.messages, "3 2 'STRING' coerced to a MESSAGE\n");
    EXPECT_EQ(source.record("X"), converter_record("00 00 00 \"scale\" 1:M.Y/CONVERTER ",
                                                   "00 00 00 00 00 00 00 01 00 00 00 01 ",
                                                   std::string(zero) + "ff 00 00 00 00 00"));
}

TEST(Converters, Messages)
{
    const struct {
        const char *body, *messages;
    } rows[] = {
        { " Divisor = 0\n", "5 3 Cannot divide by zero\n" },
        { " FuncId = 256\n", "5 3 'FunctionID' must be 0-255\n" },
        { " FuncId = -1\n", "5 3 'FunctionID' must be 0-255\n" },
        { " TransferLibrary = {L}\n", "4 3 Missing 'FunctionId'\n" },
        { " TransferLibrary = {L}, FuncId = 256\n",
          "5 3 'FunctionID' must be 0-255\n4 3 Missing 'FunctionId'\n" },
        { " TransferLibrary = {L}\n FuncId = 0\n", "" },
        { " N = 1\n", "5 3 Name 'N' is not unique\n" },
        { " Next = {A}, Next = {B}\n", "5 3 Value already specified\n" },
        { " Next = {A/WAVEFORM}\n",
          "5 3 Wrong type of DATA constant\n5 3 CONSTANT expected here\n" },
        { " Offset = {A}\n", "5 3 CONSTANT expected here\n" },
        { " OldType = \"a\"\n", "5 3 Not a compile-time constant\n5 3 CONSTANT expected here\n" },
        { " MAP 2, 1\n MAP 1, 1\n MAP 2, 1\n", "6 3 MAP point not in ascending order\n" },
        { " MAP 2 1\n",
          "5 3 Redundant expression\n5 3 Expression too complex\n5 3 CONSTANT expected here\n" },
        { " MAP 2\n", "5 3 ',' expected here\n5 3 CONSTANT expected here\n" },
        { " OldType = VOLTAGE\n MAP 1A, 1\n",
          "6 3 Type mismatch in constant expression\n6 3 CONSTANT expected here\n" },
        { " QuantityType = VOLTAGE\n MAP 1, 1A\n",
          "6 3 Type mismatch in constant expression\n6 3 CONSTANT expected here\n" },
        { " STATE 1, 2, 3\n",
          "5 3 Not a compile-time DATA constant\n5 3 CONSTANT expected here\n" },
        { " STATE \"a\", \"b\", 3\n",
          "5 3 Not a compile-time constant\n5 3 CONSTANT expected here\n" },
        { " STATE \"a\", 1, 2, 3\n", "5 3 Unexpected characters or keyword\n" },
        { " Name = \"a\"\n",
          "5 2 'STRING' coerced to a MESSAGE - further warnings in this category suppressed\n" },
    };
    for (const auto &row : rows)
        EXPECT_EQ(messages_of("CONVERTER", row.body), row.messages) << row.body;
}

TEST(Converters, FaultyItemsAreDropped)
{
    DataSource source(section("CONVERTER",
                              " Divisor = 5\n Divisor = 0\n MAP 2, 1\n MAP 1, 1\n"
                              " MAP 2, 3\n STATE \"a\", 1\n STATE 1, 2, 3\n"
                              " FuncId = 4\n FuncId = 999\n Next = {A}\n Next = {B}\n"));
    EXPECT_EQ(source.record("X"),
              converter_record(std::string("00 00 00 ") + zero + "1:B/CONVERTER ",
                               "00 00 00 00 00 00 00 01 00 00 00 05 ",
                               std::string(zero) + "04 00 00 00 00 02 "
                                                   "00 00 00 02 00 00 00 01 "
                                                   "00 00 00 02 00 00 00 03"));
}

TEST(Converters, TheLowestInputIsAPoint)
{
    EXPECT_EQ(messages_of("CONVERTER", " MAP -2147483647, 1\n MAP -2147483647 - 1, 1\n"),
              "6 3 MAP point not in ascending order\n");
    EXPECT_EQ(messages_of("CONVERTER", " MAP -2147483647 - 1, 1\n MAP 0x7FFFFFFF, 1\n"), "");
}

TEST(Converters, CountsOfStatesAndPointsHaveALimit)
{
    for (const char *item : { "MAP 1, 2", "STATE NULL, 1, 2" }) {
        for (const int count : { 65535, 65536 }) {
            CompiledSource source(section("CONVERTER", samples(count, item)));
            EXPECT_EQ(source.messages, "");
            TLC_STREAM *stream = TLC_NewStream(source.module, 0);
            source.generate(stream, "X");
            EXPECT_EQ(source.messages, count == 65535 ? "" : "0 4 Converter too large\n") << item;
            TLI_SetPSect(source.find("X"), nullptr);
            TLC_DelStream(stream);
        }
    }
}

TEST(Waveforms, SamplesOfAllStatementsAreOneRecord)
{
    EXPECT_EQ(record_of("WAVEFORM", "  0, 255,\t0x80\n  3 * 4\n\n  1, 2\n"),
              "|even 3:M.X/WAVEFORM | 00 06 00 ff 80 0c 01 02");
}

TEST(Waveforms, TheClosingEndMayStandAtAnyIndent)
{
    DataSource source("PRIVATE\nDATA WAVEFORM X\nBEGIN\n  1\n  END\n"
                      "DATA CONVERTER Y\nBEGIN\n  Offset = 1\n  END\n");
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.record("X"), "|even 3:M.X/WAVEFORM | 00 01 01");
}

TEST(Waveforms, FaultySamplesAreLeftOut)
{
    const struct {
        const char *body, *messages, *record;
    } rows[] = {
        { " 1, 256, 2\n -1\n",
          "5 3 Waveform value out of range (0-255)\n6 3 Waveform value out of range (0-255)\n",
          "00 02 01 02" },
        { " 1,\n 2\n", "5 3 Missing expression\n5 3 CONSTANT expected here\n", "00 02 01 02" },
        { " 1, \"a\", 2\n", "5 3 Not a compile-time constant\n5 3 CONSTANT expected here\n",
          "00 02 01 02" },
        { " 1V\n", "5 3 Type mismatch in constant expression\n5 3 CONSTANT expected here\n",
          "00 00" },
        { " 1\n2, 3\n", "6 3 Unexpected characters or keyword\n", "00 01 01" },
    };
    for (const auto &row : rows) {
        DataSource source(section("WAVEFORM", row.body));
        EXPECT_EQ(source.messages, row.messages) << row.body;
        EXPECT_EQ(source.record("X"), std::string("|even 3:M.X/WAVEFORM | ") + row.record)
            << row.body;
    }
}

TEST(Waveforms, TheLimitIsReportedOnce)
{
    DataSource source(section("WAVEFORM", samples(2047, "7") + " 8, 300, 9, 10, 256\n 11\n"));
    EXPECT_EQ(source.messages, "2052 3 Waveform value out of range (0-255)\n"
                               "2052 3 Too many waveform points (max 2048)\n"
                               "2052 3 Waveform value out of range (0-255)\n");
    const std::string record = source.record("X");
    EXPECT_EQ(record.substr(0, 38), "|even 3:M.X/WAVEFORM | 08 00 07 07 07 ");
    EXPECT_EQ(record.substr(record.size() - 8), "07 07 08");
}

TEST(Converters, AreObjectsInJava)
{
    DataSource source("PRIVATE\nDATA CONVERTER X\nBEGIN\n Offset = 3\nEND\n"
                      "DATA WAVEFORM W\nBEGIN\n 3\nEND\n");
    EXPECT_EQ(source.java({ "X" }), "  public static Converter X;\n    X = new Converter();\n");
    EXPECT_EQ(source.java({ "W" }), "  public static Waveform W;\n    W = new Waveform();\n");
}
