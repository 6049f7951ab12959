// Data sections: words, attribute lists, names and constants in them, and how a section is placed
// among the code of a module.
#include "tests/data_source.h"

#include "data/tld.h"

namespace
{

std::string converter(const std::string &body)
{
    return "PRIVATE\nDATA CONVERTER X\nBEGIN\n" + body + "END\n";
}

std::string messages_of(const std::string &body)
{
    return CompiledSource(converter(body)).messages;
}

// A converter's section open for items, and a statement to be read as one of it.
struct OpenSection {
    CompiledSource source;
    TLS_BLOCK *root;
    TLT_STATEMENT *statement;

    explicit OpenSection(const char *text) : source(converter(""))
    {
        root = TLIV_GetFunctionBlock(source.find("X"));
        statement = TLT_NewStatement(text, "x.tl", 9, 9);
        TLIV_PushScope(TLP_ModuleDomain(source.module), source.find("X"));
        source.messages.clear();
    }
    ~OpenSection()
    {
        TLIV_PopScope(TLP_ModuleDomain(source.module), source.find("X"));
        TLT_DelStatement(statement);
    }
    OpenSection(const OpenSection &) = delete;
    OpenSection &operator=(const OpenSection &) = delete;

    TLI_IDENTIFIER *type(const char *name) const
    {
        return TLIT_FindType(TLP_DataTypeDomain(source.module), name);
    }
};

int32_t word_of(const char *text)
{
    TLT_STATEMENT *statement = TLT_NewStatement(text, "x.tl", 1, 1);
    const int32_t word = TLD_DataToken(statement);
    EXPECT_EQ(TLD_DataToken(statement), word) << "the token stays";
    TLT_DelStatement(statement);
    return word;
}

void note_word(void *user, TLS_BLOCK *, TLT_STATEMENT *, const char *word)
{
    *static_cast<std::string *>(user) += std::string(word) + ";";
}

constexpr TLD_ATTRIBUTE attributes[] = {
    { .code = 3, .word = "Title", .type_name = "STRING" },
    { .code = 4, .word = "Size", .type_name = "INT" },
    { .code = 5, .word = "Mode", .type_name = nullptr },
};

} // namespace

TEST(DataSections, WordsOfItemsAreFoundInAnyCase)
{
    TLP_Initialise();
    TLS_Initialise();
    const char *const words[] = { "MESSAGE", "Picture", "view",  "View", "pIN",
                                  "POINT",   "END",     "STATE", "map",  "VarLoc" };
    const int32_t expected[] = { 0, 1, 2, 2, 3, 4, 5, 6, 7, 8 };
    for (size_t i = 0; i < std::size(words); i++)
        EXPECT_EQ(word_of(words[i]), expected[i]) << words[i];
    for (const char *other : { "12", "VIEWS", "\"VIEW\"", "", "=", "VAR" })
        EXPECT_EQ(word_of(other), TLD_WORD_NONE) << other;
}

TEST(DataSections, NamesAreWordsOrTextsBelow32Characters)
{
    const std::string longest(31, 'a');
    const struct {
        std::string text;
        int32_t result;
        int32_t left; // next token behind it
    } rows[] = {
        { "abc =", 1, TLT_TOKEN_ASSIGN },      { "\"a b\" =", 1, TLT_TOKEN_ASSIGN },
        { longest, 1, TLT_TOKEN_END_OF_LINE }, { "\"" + longest + "b\" =", 0, TLT_TOKEN_ASSIGN },
        { "5", 0, TLT_TOKEN_NUMBER },          { "VAR", 0, TLT_TOKEN_VAR },
    };
    for (const auto &row : rows) {
        OpenSection section(row.text.c_str());
        char name[TLD_NAME_SIZE] = "before";
        EXPECT_EQ(TLD_ExpectName(section.statement, name), row.result) << row.text;
        EXPECT_EQ(TLT_NextToken(section.statement, nullptr), row.left) << row.text;
        if (row.result == 0) {
            EXPECT_STREQ(name, "before") << row.text;
        }
    }
}

TEST(DataSections, ListsGoOnWithOrWithoutCommas)
{
    const std::string too_long(32, 'a');
    const struct {
        std::string text;
        const char *words;
    } rows[] = {
        { "a, b c ,\"d e\"", "a;b;c;d e;" },    { "", "" },     { "a,, b", "a;" },
        { "a, \"" + too_long + "\", b", "a;" }, { "5, a", "" }, { "a = b", "a;" },
    };
    for (const auto &row : rows) {
        OpenSection section(row.text.c_str());
        std::string words;
        TLD_ParseData(section.root, section.statement, note_word, &words);
        EXPECT_EQ(words, row.words) << row.text;
        EXPECT_EQ(section.source.messages, "") << row.text;
    }
    OpenSection section("a, b");
    TLD_ParseData(section.root, section.statement, nullptr, nullptr);
    EXPECT_EQ(section.source.messages, "9 3 Unexpected attribute\n9 3 Unexpected attribute\n");
}

TEST(DataSections, TextsAreTakenWithoutAWarning)
{
    OpenSection section("= \"engine\"");
    intptr_t value = 0;
    EXPECT_EQ(TLD_FindAttribute(section.root, section.statement, "t", attributes, 3, &value), 3);
    EXPECT_EQ(section.source.messages, "");
    auto *term = reinterpret_cast<TLE_TERM *>(value);
    EXPECT_EQ(TLE_ExpressionType(term), section.type("MESSAGE"));
    EXPECT_STREQ(TLE_TermValue(term), "engine");
    TLE_DelExpression(term);
}

TEST(DataSections, ValuesOfAttributesAreChecked)
{
    const struct {
        const char *word, *text;
        int32_t code;
        intptr_t value;
        const char *messages;
    } rows[] = {
        { "SIZE", "= 3 * 4", 4, 12, "" },
        { "mode", "= 3", 5, 77, "" }, // the parser takes the value itself
        { "Size", "3", -1, 77, "9 3 '=' expected here\n" },
        { "Sizes", "= 3", -1, 77, "9 3 Name 'Sizes' is not allowed here\n" },
        { "", "= 3", -1, 77, "9 3 Name '' is not unique\n" },
        { "Size", "= {X}", -1, 77, "9 3 CONSTANT expected here\n" },
        { "Size", "= \"3\"", -1, 77,
          "9 3 Not a compile-time constant\n9 3 CONSTANT expected here\n" },
        { "Size", "= 3V", -1, 77,
          "9 3 Type mismatch in constant expression\n9 3 CONSTANT expected here\n" },
        { "Size", "=", -1, 77, "9 3 Missing expression\n9 3 CONSTANT expected here\n" },
    };
    for (const auto &row : rows) {
        OpenSection section(row.text);
        intptr_t value = 77;
        EXPECT_EQ(
            TLD_FindAttribute(section.root, section.statement, row.word, attributes, 3, &value),
            row.code)
            << row.text;
        EXPECT_EQ(value, row.value) << row.word << row.text;
        EXPECT_EQ(section.source.messages, row.messages) << row.word << row.text;
    }
}

TEST(DataSections, ConstantsOfEveryKindHaveAValue)
{
    const auto read = [](const char *text, TLI_IDENTIFIER *type, intptr_t *value) {
        OpenSection section(text);
        const int32_t result = TLD_ExpectConstant(section.root, section.statement, type, value, 0);
        EXPECT_EQ(section.source.messages, "") << text;
        return result;
    };
    TLP_Initialise();
    intptr_t value = 77;
    EXPECT_EQ(read("NULL", TLIT_StringType, &value), 1);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(read("3V", TLIT_WordType, &value), 1);
    EXPECT_EQ(value, 3000);
    EXPECT_EQ(read("\"engine\"", TLIT_StringType, &value), 1);
    char *text = reinterpret_cast<char *>(value);
    EXPECT_STREQ(text, "engine");
    ST_Free(text);
}

TEST(DataSections, EnumeratedWordsAreOred)
{
    const TLD_ATTRIBUTE words[] = {
        { .code = 0, .word = "Fixed", .type_name = nullptr },
        { .code = 1, .word = "Removable", .type_name = nullptr },
        { .code = 2, .word = "Back", .type_name = nullptr },
    };
    const struct {
        const char *text;
        int32_t value;
        const char *messages;
    } rows[] = {
        { "= Fixed, back", 2, "" },
        { "= rem , B", 3, "" },
        { "= \"Back\"", 2, "" },
        { "Back", 0, "9 3 '=' expected here\n" },
        { "= 5", 0, "9 3 Missing Value\n" },
        { "= , Back", 2, "9 3 Missing Value\n" },
        { "= Back,", 2, "9 3 Missing Value\n" },
        { "= Back, Name", 2, "9 3 Name 'Name' is not allowed here\n" },
    };
    for (const auto &row : rows) {
        OpenSection section(row.text);
        EXPECT_EQ(TLD_GetEnumeratedValue(section.statement, words, 3), row.value) << row.text;
        EXPECT_EQ(section.source.messages, row.messages) << row.text;
    }
}

TEST(DataSections, ItemsAreNamedAndKnownToCode)
{
    const std::string word(20, 'w');
    const struct {
        const char *text, *prefix, *name, *messages;
    } rows[] = {
        { "left", nullptr, "left", "" },
        { "left", "pin", "pin.left", "" },
        { "\"4a\"", nullptr, "4a", "" },
        { "5", nullptr, nullptr, "9 3 Identifier expected here\n" },
        { word.c_str(), "pin_eleven", "pin_eleven.wwwwwwwwwwwwwwwwwwww", "" },
        { word.c_str(), "pin_eleven2", nullptr,
          "9 3 Identifier too long\n9 3 Identifier expected here\n" },
    };
    for (const auto &row : rows) {
        OpenSection section(row.text);
        TLI_IDENTIFIER *type = section.type("PIN");
        TLI_IDENTIFIER *identifier = TLD_ExpectIdentifier(section.root, section.statement, type,
                                                          section.root->head, row.prefix);
        EXPECT_EQ(section.source.messages, row.messages) << row.text;
        if (row.name == nullptr) {
            EXPECT_EQ(identifier, nullptr) << row.text;
            continue;
        }
        ASSERT_NE(identifier, nullptr) << row.text;
        EXPECT_EQ(TLI_FindDomainIdentifier(TLP_ModuleDomain(section.source.module), row.name),
                  identifier);
        EXPECT_EQ(TLI_IdentifierType(identifier), type) << row.text;
        EXPECT_EQ(TLI_IdentifierClass(identifier), TLI_NODE) << row.text;
    }
    OpenSection section("left");
    TLI_IDENTIFIER *pin = TLD_ExpectIdentifier(section.root, section.statement, section.type("PIN"),
                                               section.root->head, "pin");
    EXPECT_EQ(section.source.find("X.pin.left"), pin) << "through the section";
    OpenSection typeless("left");
    EXPECT_EQ(TLD_ExpectIdentifier(typeless.root, typeless.statement, nullptr, nullptr, nullptr),
              nullptr);
    EXPECT_EQ(typeless.source.messages, "9 3 Identifier expected here\n");
}

TEST(DataSections, MissingAndRepeatedValuesAreReported)
{
    OpenSection section("");
    intptr_t slot = 0;
    TLD_SetValue(section.statement, &slot, 5);
    EXPECT_EQ(section.source.messages, "");
    TLD_SetValue(section.statement, &slot, 6);
    EXPECT_EQ(slot, 6);
    TLD_CheckValue(section.root->head, slot, "NAME");
    TLD_CheckValue(section.root->head, 0, "NAME");
    EXPECT_EQ(section.source.messages,
              "9 3 Value already specified\n4 3 Value for 'NAME' not specified\n");
}

TEST(DataSections, StatementsFindTheirBlockByIndent)
{
    EXPECT_EQ(messages_of("Offset = 1\nMultiplier = 2\n"), "") << "at the column of END";
    EXPECT_EQ(messages_of("   Offset = 1\n\n   Multiplier = 2\n   END\n"), "");
    EXPECT_EQ(messages_of("  Offset = 1\n    Multiplier = 2\n"), "6 3 New block in wrong place\n");
    EXPECT_EQ(messages_of("  Offset = 1 2\n"),
              "5 3 Redundant expression\n5 3 Expression too complex\n5 3 CONSTANT expected here\n");
    EXPECT_EQ(messages_of("  5\n"), "5 3 Unexpected characters or keyword\n");
    EXPECT_EQ(messages_of("  VAR\n"),
              "5 4 Previous BEGIN-END block not closed\n4 3 Missing 'END'\n");
}

TEST(DataSections, SymbolsFollowTheQualifiers)
{
    DataSource source("DATA WAVEFORM W\nPRIVATE\nDATA WAVEFORM W\nBEGIN\nEND\n"
                      "FORWARD DATA WAVEFORM V\nDATA WAVEFORM V\nBEGIN\nEND\n");
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.record("W"), "|even 0:M.W/WAVEFORM | 00 00");
    EXPECT_EQ(source.record("V"), "|even 3:M.V/WAVEFORM | 00 00");
}

TEST(DataSections, SectionsStandOnEvenAddressesAmongTheCode)
{
    const std::string text = "MODULE M\nPRIVATE\nDATA WAVEFORM A\nBEGIN\n 1\nEND\n"
                             "DATA WAVEFORM B\nBEGIN\n 2, 3\nEND\nFUNCTION VOID F()\nBEGIN\nEND\n";
    std::ofstream(program::folder() / "placed.tl") << text;
    const std::string path = program::compile((program::folder() / "placed.tl").string());
    program::expect_sound(path);
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    const std::string placed("\x00\x01\x01\x00\x00\x02\x02\x03", 8);
    EXPECT_NE(bytes.find(placed), std::string::npos);
}

TEST(DataSections, CodeNamesSectionsAsValues)
{
    CompiledSource source("PRIVATE\nDATA WAVEFORM W\nBEGIN\nEND\nFUNCTION WAVEFORM F()\nBEGIN\n"
                          " RETURN W\nEND\n");
    EXPECT_EQ(source.messages, "");
    EXPECT_EQ(source.body("F"), "LCA 1:M.W/WAVEFORM RET STOP");
}

TEST(DataSections, NothingReachesC)
{
    const std::string text =
        converter(" STATE \"a\", 0, 1\n") + "DATA WAVEFORM W\nBEGIN\n 1\nEND\n";
    CompiledSource source(text);
    char *buffer = nullptr;
    size_t size = 0;
    FILE *file = open_memstream(&buffer, &size);
    TLC_STREAM *stream = TLC_NewCStream(file, source.module, 0);
    source.generate(stream, "X");
    source.generate(stream, "W");
    TLC_DelStream(stream);
    std::fclose(file);
    EXPECT_EQ(std::string(buffer, size), "");
    std::free(buffer);
}
