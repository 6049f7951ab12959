// Built-in functions: what each accepts, gives and folds, and its exact code for each target.
#include "tests/compiled_source.h"
#include "tests/parsed_expression.h"

#include <cstring>
#include <initializer_list>
#include <sstream>

#include "expr/tlb.h"

namespace
{

const std::string refused = "|3 Incorrect arguments to built-in function '";

struct Row {
    const char *expression;
    const char *expected;
};

// Each expression as a tree with its type and messages; "#" stands for the message of all built-ins.
void expect_trees(ExpressionSource *source, std::initializer_list<Row> rows)
{
    for (const Row &row : rows) {
        const std::string call = row.expression;
        std::string expected = row.expected;
        const size_t mark = expected.find('#');
        if (mark != std::string::npos)
            expected.replace(mark, 1, refused + call.substr(0, call.find('(')) + "'");
        EXPECT_EQ(source->parse(call), expected) << call;
    }
}

} // namespace

TEST(BuiltIns, NamesAreMadeOnceInTheirOrder)
{
    TLP_Initialise();
    TLB_Initialise();
    TLE_Initialise();
    std::string names;
    TLI_AllIdentifiers(
        TLI_GetScope(TLIT_LanguageDomain(), nullptr),
        [](void *text, const char *name, TLI_IDENTIFIER *identifier) {
            const int32_t name_class = TLI_IdentifierClass(identifier);
            if (name_class == TLI_BUILT_IN_FUNCTION || strcmp(name, "CVT_TYPE") == 0)
                *static_cast<std::string *>(text) += std::string(name) + " ";
            return 1;
        },
        &names);
    EXPECT_EQ(names,
              "round to_float release create attr upb max min cvts cvt CVT_TYPE qty cast abs ");
    TLI_IDENTIFIER *direction = TLIT_FindType(nullptr, "CVT_TYPE");
    EXPECT_STREQ(TLI_IdentifierName(TLIT_EnumGetValue(direction, 0)), "FORWARDS");
    EXPECT_STREQ(TLI_IdentifierName(TLIT_EnumGetValue(direction, 1)), "BACKWARDS");
    EXPECT_EQ(TLIT_EnumRange(direction), 2);
}

TEST(BuiltIns, CountsOfArguments)
{
    static const struct {
        const char *name;
        int least, most;
    } rows[] = {
        { "abs", 1, 1 },   { "cast", 2, 2 },   { "qty", 1, 1 },     { "cvt", 2, 3 },
        { "cvts", 2, 3 },  { "min", 1, 2 },    { "max", 1, 2 },     { "upb", 1, 1 },
        { "attr", 2, 3 },  { "create", 1, 1 }, { "release", 1, 1 }, { "to_float", 1, 1 },
        { "round", 1, 1 },
    };
    ExpressionSource source;
    for (const auto &row : rows) {
        const auto *record =
            static_cast<const TLB_BUILT_IN *>(TLIT_BifClass(TLIT_FindType(nullptr, row.name)));
        ASSERT_NE(record, nullptr) << row.name;
        EXPECT_EQ(record->minimum_arguments, row.least) << row.name;
        EXPECT_EQ(record->maximum_arguments, row.most) << row.name;
        std::string call = std::string(row.name) + "(";
        for (int i = 0; i <= row.most; i++)
            call += i == 0 ? "M10" : ", M10";
        // Refused for the count alone: no message of its own comes first.
        for (const std::string &text :
             { std::string(row.name), row.name + std::string("()"), call + ")" }) {
            source.parse(text);
            EXPECT_EQ(source.messages(), refused + row.name + "'") << text;
        }
    }
}

TEST(BuiltIns, Trees)
{
    ExpressionSource source;
    expect_trees(
        &source,
        {
            { "abs(A)", "<BIF>abs(A) INT" },
            { "abs(U)", "<BIF>abs(U) VOLTAGE" },
            { "abs(ANY)", "<BIF>abs(ANY) QUANTITY" },
            { "abs(K)", "<BIF>abs(K) INT" },
            { "abs(-5)", "5 INT" },
            { "abs(5)", "5 INT" },
            { "abs(-5V)", "5000 VOLTAGE" },
            { "abs(BLUE)", "2 INT" },
            { "abs(-2147483647 - 1)", "-2147483648 INT" },
            { "abs(LETTER)", "<BIF>abs(LETTER) <UNTYPED>#" },
            { "abs(SMALL)", "<BIF>abs(SMALL) <UNTYPED>#" },
            { "abs(FL)", "<BIF>abs(FL) <UNTYPED>#" },
            { "abs(NULL)", "<BIF>abs(NULL) <UNTYPED>#" },
            { "abs(COLOUR)", "<BIF>abs(COLOUR) <UNTYPED>#" },
            { "cast(A, VOLTAGE)", "<BIF>cast(A,1) VOLTAGE" },
            { "cast(U, INT)", "<BIF>cast(U,0) INT" },
            { "cast(K, INT)", "<BIF>cast(K,0) INT" },
            { "cast(A, COLOUR)", "<BIF>cast(A,COLOUR) COLOUR" },
            { "cast(LETTER, SHORT)", "<BIF>cast(LETTER,0) SHORT" },
            { "cast(W, CHAR)", "<BIF>cast(W,0) CHAR" },
            { "cast(5, VOLTAGE)", "5 VOLTAGE" },
            { "cast(5V, INT)", "5000 INT" },
            { "cast(2, COLOUR)", "2 COLOUR" },
            { "cast(VOLTAGE, INT)", "1 INT" },
            { "cast(\"a\", MESSAGE)", "\"a\" MESSAGE" },
            { "cast(cast(\"a\", MESSAGE), STRING)", "\"a\" STRING" },
            { "cast(S, MESSAGE)", "<BIF>cast(S,MESSAGE) MESSAGE" },
            { "cast(TOLD, STRING)", "<BIF>cast(TOLD,STRING) STRING" },
            { "cast(NULL, STRING)", "<BIF>cast(NULL,STRING) STRING" },
            { "cast(NULL, CONNECTOR)", "<BIF>cast(NULL,CONNECTOR) CONNECTOR" },
            { "cast(NULL, PAIR_AT)", "<BIF>cast(NULL,PAIR_AT) <UNTYPED>#" },
            { "cast(NULL, INT)", "<BIF>cast(NULL,0) <UNTYPED>#" },
            { "cast(A, STRING)",
              "<BIF>cast(A,STRING) <UNTYPED>|3 Second argument must be a INT-based TYPE#" },
            { "cast(FL, INT)", "<BIF>cast(FL,0) <UNTYPED>#" },
            { "cast(S, STRING)", "<BIF>cast(S,STRING) <UNTYPED>#" },
            { "cast(S, INT)", "<BIF>cast(S,0) <UNTYPED>#" },
            { "cast(A, B)", "<BIF>cast(A,B) <UNTYPED>#" },
            { "cast(R, PAIR)", "<BIF>cast(R,PAIR) <UNTYPED>#" },
            { "cast(P, PAIR_AT)", "<BIF>cast(P,PAIR_AT) <UNTYPED>#" },
            { "qty(VOLTAGE)", "1 QUANTITY_TYPE" },
            { "qty(INT)", "0 QUANTITY_TYPE" },
            { "qty(CHAR)", "0 QUANTITY_TYPE" },
            { "qty(VOLTAGE) == qty(CURRENT)", "0 BOOL" },
            { "qty(QUANTITY)", "<BIF>qty(QUANTITY) <UNTYPED>|3 Argument must be a quantity type#" },
            { "qty(COLOUR)", "<BIF>qty(COLOUR) <UNTYPED>|3 Argument must be a quantity type#" },
            { "qty(U)", "<BIF>qty(U) <UNTYPED>|3 Argument must be a quantity type#" },
            { "min(COLOUR)", "0 COLOUR" },
            { "min(K)", "0 COLOUR" },
            { "min(BLUE)", "0 COLOUR" },
            { "min(CHAR)", "0 INT" },
            { "min(INT)", "-2147483648 INT" },
            { "min(VOLTAGE)", "-2147483648 VOLTAGE" },
            { "min(U)", "-2147483648 VOLTAGE" },
            { "min(5A)", "-2147483648 CURRENT" },
            { "min(WORD)", "-2147483648 WORD" },
            { "min(SHORT)", "<BIF>min(0) <UNTYPED>#" },
            { "min(STRING)", "<BIF>min(STRING) <UNTYPED>#" },
            { "min(FL)", "<BIF>min(FL) <UNTYPED>#" },
            { "min(NULL)", "<BIF>min(NULL) <UNTYPED>#" },
            { "max(COLOUR)", "2 COLOUR" },
            { "max(LETTER)", "255 INT" },
            { "max(INT)", "2147483647 INT" },
            { "max(VOLTAGE)", "2147483647 VOLTAGE" },
            { "max(QUANTITY_TYPE)", "-1 QUANTITY_TYPE" },
            { "max(SMALL)", "<BIF>max(SMALL) <UNTYPED>#" },
            { "min(3, 7)", "3 INT" },
            { "min(7, 3)", "3 INT" },
            { "min(-1V, 2V)", "-1000 VOLTAGE" },
            { "min(BLUE, GREEN)", "1 COLOUR" },
            { "min(A, 3)", "<BIF>min(A,3) INT" },
            { "min(U, 3V)", "<BIF>min(U,3000) VOLTAGE" },
            { "min(U, ANY)", "<BIF>min(U,ANY) VOLTAGE" },
            { "min(A, LETTER)", "<BIF>min(A,LETTER) INT" },
            { "min(LETTER, A)", "<BIF>min(LETTER,A) <UNTYPED>#" },
            { "min(U, I)", "<BIF>min(U,I) <UNTYPED>#" },
            { "min(U, 3)", "<BIF>min(U,3) <UNTYPED>#" },
            { "min(K, Q)", "<BIF>min(K,Q) <UNTYPED>#" },
            { "min(S, S)", "<BIF>min(S,S) <UNTYPED>#" },
            { "max(3, 7)", "7 INT" },
            { "max(7, 3)", "7 INT" },
            { "max(RED, BLUE)", "2 COLOUR" },
            { "max(A, 3)", "<BIF>max(A,3) INT" },
            { "upb(M10)", "9 INT" },
            { "upb(TABLE)", "2 INT" },
            { "upb(HUES)", "2 INT" },
            { "upb(R:LIST)", "3 INT" },
            { "upb(P->LIST)", "3 INT" },
            { "upb(OPEN)", "<BIF>upb(OPEN) INT" },
            { "upb(A)", "<BIF>upb(A) <UNTYPED>#" },
            { "upb(R)", "<BIF>upb(R) <UNTYPED>#" },
            { "upb(COLOUR)", "<BIF>upb(COLOUR) <UNTYPED>#" },
            { "upb(F)", "<BIF>upb(<ADDRESS>F) <UNTYPED>#" },
            { "to_float(A)", "<BIF>to_float(A) FLOAT" },
            { "to_float(5)", "<BIF>to_float(5) FLOAT" },
            { "to_float(U)", "<BIF>to_float(U) FLOAT" },
            { "to_float(LETTER)", "<BIF>to_float(LETTER) <UNTYPED>#" },
            { "to_float(K)", "<BIF>to_float(K) <UNTYPED>#" },
            { "to_float(NULL)", "<BIF>to_float(NULL) <UNTYPED>#" },
            { "round(FL)", "<BIF>round(FL) INT" },
            { "round(to_float(A))", "<BIF>round(<BIF>to_float(A)) INT" },
            { "round(A)", "<BIF>round(A) <UNTYPED>#" },
        });
}

TEST(BuiltIns, CastOfObjects)
{
    ExpressionSource source("TYPEDEF RECORD ONE(INT X)\nTYPEDEF RECORD TWO(INT X)\n"
                            "TYPEDEF RECORD OTHER(INT X)\nTYPEDEF RECORD BARE(INT X)\n"
                            "PRAGMA (ONE, CLSID) = \"{1}\"\nPRAGMA (TWO, CLSID) = \"{1}\"\n"
                            "PRAGMA (OTHER, CLSID) = \"{2}\"\nPRIVATE\nVAR ONE O\nVAR BARE B\n");
    expect_trees(&source, {
                              { "cast(O, TWO)", "<BIF>cast(O,TWO) TWO" },
                              { "cast(O, OTHER)", "<BIF>cast(O,OTHER) <UNTYPED>#" },
                              { "cast(O, BARE)", "<BIF>cast(O,BARE) <UNTYPED>#" },
                              { "cast(B, ONE)", "<BIF>cast(B,ONE) <UNTYPED>#" },
                          });
}

TEST(BuiltIns, UnitConversion)
{
    ExpressionSource source("PRIVATE\nVAR CONVERTER C\nVAR VOLTAGE U\nVAR BOOL Q\nVAR FLOAT FL\n"
                            "VAR CVT_TYPE WAY\nVAR PIN P\nVAR CHAR LETTER\n");
    expect_trees(
        &source,
        {
            { "cvt(U, C)", "<BIF>cvt(U,C) QUANTITY" },
            { "cvt(LETTER, C)", "<BIF>cvt(LETTER,C) QUANTITY" },
            { "cvt(Q, C)", "<BIF>cvt(Q,C) QUANTITY" },
            { "cvt(1, {X/CONVERTER})", "<BIF>cvt(1,{X}) QUANTITY" },
            { "cvt(U, C, FORWARDS)", "<BIF>cvt(U,C,0) QUANTITY" },
            { "cvt(U, C, BACKWARDS)", "<BIF>cvt(U,C,1) QUANTITY" },
            { "cvt(FL, C)", "<BIF>cvt(FL,C) <UNTYPED>#" },
            { "cvt(U, P)", "<BIF>cvt(U,P) <UNTYPED>#" },
            { "cvt(U, {X})", "<BIF>cvt(U,{X}) <UNTYPED>#" },
            { "cvt(U, U)", "<BIF>cvt(U,U) <UNTYPED>#" },
            { "cvt(U, C, WAY)", "<BIF>cvt(U,C,WAY) <UNTYPED>|3 Not a compile-time constant"
                                "|3 Bad argument to 'cvt'#" },
            { "cvt(U, C, TRUE)", "<BIF>cvt(U,C,1) <UNTYPED>|3 Type mismatch in constant "
                                 "expression|3 Bad argument to 'cvt'#" },
            { "cvt(U, C, {X/CVT_TYPE})", "<BIF>cvt(U,C,{X}) <UNTYPED>|3 Bad argument to 'cvt'#" },
            { "cvts(U, C)", "<BIF>cvts(U,C) STRING" },
            { "cvts(U, C, BACKWARDS)", "<BIF>cvts(U,C,1) STRING" },
            { "cvts(FL, C)", "<BIF>cvts(FL,C) <UNTYPED>#" },
            { "cvts(U, C, WAY)", "<BIF>cvts(U,C,WAY) <UNTYPED>|3 Not a compile-time constant"
                                 "|3 Bad argument to 'cvt'#" },
        });
}

TEST(BuiltIns, Attributes)
{
    ExpressionSource source("PRIVATE\nVAR CONNECTOR C\nVAR POINT P\nVAR PICTURE PIX\nVAR INT A\n"
                            "VAR FLOAT FL\nVAR STRING S\nVAR CHAR LETTER\n");
    expect_trees(
        &source,
        {
            { "attr(C, \"NAME\")", "<BIF>attr(C,\"NAME\") MESSAGE" },
            { "attr(C, \"Cable\")", "<BIF>attr(C,\"Cable\") INT" },
            { "attr(P, \"matingpoint\")", "<BIF>attr(P,\"matingpoint\") POINT" },
            { "attr(C, \"POINT\", A)", "<BIF>attr(C,\"POINT\",A) POINT" },
            { "attr(C, \"POINT\", LETTER)", "<BIF>attr(C,\"POINT\",LETTER) POINT" },
            { "attr({X/PIN}, \"CONNECTOR\")", "<BIF>attr({X},\"CONNECTOR\") CONNECTOR" },
            { "attr(C, \"POINT\", FL)",
              "<BIF>attr(C,\"POINT\",FL) <UNTYPED>|3 Optional argument should be 'INT'-based|3 "
              "\"POINT\" attribute not supported for 'CONNECTOR'#" },
            { "attr(C, \"LINE\")", "<BIF>attr(C,\"LINE\") <UNTYPED>|3 \"LINE\" attribute not "
                                   "supported for 'CONNECTOR'#" },
            { "attr(PIX, \"NAME\")", "<BIF>attr(PIX,\"NAME\") <UNTYPED>|3 \"NAME\" attribute not "
                                     "supported for 'PICTURE'#" },
            { "attr({X}, \"NAME\")",
              "<BIF>attr({X},\"NAME\") <UNTYPED>|3 \"NAME\" attribute not supported for 'DATA'#" },
            { "attr(C, S)", "<BIF>attr(C,S) <UNTYPED>|3 Bad arguments for 'attr'#" },
            { "attr(CONNECTOR, \"NAME\")",
              "<BIF>attr(CONNECTOR,\"NAME\") <UNTYPED>|3 Bad arguments for 'attr'#" },
            { "attr(C, \"NAMENAMENAMENAMENAMENAMENAMENAME\")",
              "<BIF>attr(C,\"NAMENAMENAMENAMENAMENAMENAMENAME\") <UNTYPED>|3 "
              "\"NAMENAMENAMENAMENAMENAMENAMENAME\" attribute not supported for 'CONNECTOR'#" },
        });
}

TEST(BuiltIns, AttributeRows)
{
    // Kind of the item, name, type of the result, code.
    static const struct {
        const char *kind;
        int32_t number;
        const char *attributes;
    } rows[] = {
        { "CONNECTOR", 1,
          "NAME MESSAGE 0; FLAGS INT 8; MNEMONIC MESSAGE 6; LOCATION PARAMETER 9; POINT POINT 12; "
          "VIEW VIEW 2; CABLE INT 14; HELPSCREEN HELPSCREEN 17; VARLOC VARLOC 18" },
        { "VIEW", 3,
          "NAME MESSAGE 0; FLAGS INT 8; CONNECTOR CONNECTOR 4; COMPONENT COMPONENT 5; "
          "SHELL PICTURE 15; VIEW VIEW 2; HELPSCREEN HELPSCREEN 17" },
        { "PIN", 4, "NAME MESSAGE 0; FLAGS INT 8; CONNECTOR CONNECTOR 4" },
        { "POINT", 5,
          "NAME MESSAGE 0; FLAGS INT 8; SIGNALNAME MESSAGE 1; VIEW VIEW 2; PIN PIN 3; "
          "CONNECTOR CONNECTOR 4; COMPONENT COMPONENT 5; LINE INT 7; LOCATION PARAMETER 9; "
          "ADAPTOR INT 10; ADAPTORTYPE INT 11; POINT POINT 12; MATINGPOINT POINT 13" },
        { "COMPONENT", 6,
          "NAME MESSAGE 0; FLAGS INT 8; LOCATION PARAMETER 9; PARENT COMPONENT 16; "
          "HELPSCREEN HELPSCREEN 17; VARLOC VARLOC 18" },
        { "CONVERTER", 7,
          "NAME MESSAGE 0; NEXT CONVERTER 1; OFFSET INT 4; MULTIPLIER INT 2; DIVISOR INT 3; "
          "OLDTYPE QUANTITY_TYPE 10; QUANTITYTYPE QUANTITY_TYPE 6; FLAGS INT 5; STATES INT 7; "
          "STATETEXT MESSAGE 8; STATELOW QUANTITY 9; STATEHIGH QUANTITY 11" },
        { "HELPSCREEN", 8, "TITLE MESSAGE 0" },
        { "PARAMETER", 9, "PICTURE PICTURE 0" },
        { "VARLOC", 11, "LOCATION PARAMETER 9; ATTRIBUTES INT 19; VARLOC VARLOC 18" },
    };
    for (const auto &row : rows) {
        std::istringstream attributes(row.attributes);
        std::string name, type, code;
        while (attributes >> name >> type >> code) {
            if (code.back() == ';') code.pop_back();
            CompiledSource source("PRIVATE\nFUNCTION VOID F()\nVAR " + std::string(row.kind) +
                                  " I\nVAR " + type + " O\nBEGIN\n  O = attr(I, \"" + name +
                                  "\")\nEND\n");
            EXPECT_EQ(source.messages, "") << row.kind << " " << name;
            const std::string wanted = code + " ATTR " + std::to_string(row.number);
            EXPECT_NE(source.code("F").find(" " + wanted + " "), std::string::npos)
                << row.kind << " " << name << "\n"
                << source.code("F");
        }
    }
}

TEST(BuiltIns, Objects)
{
    ExpressionSource source("TYPEDEF RECORD OBJECT(INT X)\nPRAGMA (OBJECT, CLSID) = \"{1}\"\n"
                            "TYPEDEF RECORD LONE(INT X)\nPRAGMA (LONE, CLSID) = \"{2}\"\n"
                            "TYPEDEF RECORD BARE(INT X)\nTYPEDEF -> BARE BARE_AT\n"
                            "TYPEDEF -> OBJECT OBJECT_AT\nTYPEDEF -> OBJECT LATER_AT\n"
                            "PRIVATE\nVAR OBJECT O\nVAR LATER_AT L\nVAR BARE_AT B\nVAR INT A\n");
    expect_trees(&source,
                 {
                     { "create(OBJECT)", "<BIF>create(OBJECT) OBJECT_AT" },
                     { "create(LONE)", "<BIF>create(LONE) <UNTYPED>#" },
                     { "create(BARE)", "<BIF>create(BARE) <UNTYPED>#" },
                     { "create(O)", "<BIF>create(O) <UNTYPED>#" },
                     { "create(OBJECT_AT)", "<BIF>create(OBJECT_AT) <UNTYPED>#" },
                     { "release(L)", "<BIF>release(L) LATER_AT" },
                     { "release(create(OBJECT))", "<BIF>release(<BIF>create(OBJECT)) OBJECT_AT" },
                     { "release(B)", "<BIF>release(B) <UNTYPED>#" },
                     { "release(O)", "<BIF>release(O) <UNTYPED>#" },
                     { "release(A)", "<BIF>release(A) <UNTYPED>#" },
                 });
}

namespace
{

// Offsets in the frame: X 0, Y 4, K 8, U 10, FL 14, S 18, T 22, C 26, P 30, Q 34, V 38, O 42, N 46,
// ANY 48; 8 more each behind an array argument.
std::string function(const std::string &statement, const std::string &arguments = "")
{
    return "ENUM COLOUR = RED GREEN BLUE\n"
           "TYPEDEF RECORD PAIR(INT LEFT, INT LIST[], CONNECTOR PLUGS[])\n"
           "TYPEDEF -> PAIR PAIR_AT\n"
           "TYPEDEF RECORD PAIR(PAIR_AT MATES[])\n"
           "TYPEDEF RECORD OBJECT(INT LEFT)\n"
           "PRAGMA (OBJECT, CLSID) = \"{1-2}\"\n"
           "TYPEDEF -> OBJECT FIRST_AT\n"
           "TYPEDEF -> OBJECT OBJECT_AT\n"
           "PRIVATE\n"
           "FUNCTION VOID F(" +
           arguments +
           ")\n"
           "VAR INT X, Y\nVAR COLOUR K\nVAR VOLTAGE U\nVAR FLOAT FL\nVAR STRING S\n"
           "VAR MESSAGE T\nVAR CONNECTOR C\nVAR POINT P\nVAR PAIR_AT Q\nVAR CONVERTER V\n"
           "VAR FIRST_AT O\nVAR QUANTITY_TYPE N\nVAR QUANTITY ANY\n"
           "BEGIN\n  " +
           statement + "\nEND\n";
}

std::string with_array(const std::string &statement)
{
    return function(statement, "VAR INT A[]");
}

// The frame of F and its end stand around each code.
void expect_statements(const SourceRows &rows)
{
    SourceRows whole = rows;
    for (SourceRow &row : whole)
        row.expected = "| ALLOC 60 " + row.expected + " | 0 RET ";
    expect_code(with_array, whole);
}

} // namespace

TEST(BuiltIns, CodeOfValues)
{
    expect_statements({
        { "X = abs(Y)", "| 12 LLW | DUP JNN ->4 | NEG | 8 SLWP" },
        { "X = abs(K)", "| 16 LLB 8 SLWP" },
        { "X = abs(-5)", "| 5 8 SLWP" },
        { "X = 1 + abs(Y - 2)", "| 1 12 LLW 2 SUB | DUP JNN ->4 | NEG | ADD 8 SLWP" },
        { "U = cast(X, VOLTAGE)", "| | 8 LLW 18 SLWP" },
        { "T = cast(S, MESSAGE)", "| | 26 LLW 30 SLWP" },
        { "T = cast(\"a\", MESSAGE)", "| LCA \"a\" 30 SLWP" },
        { "C = cast(NULL, CONNECTOR)", "| | 0 SLIT 34 SLWP" },
        { "FL = to_float(X)", "| | 8 LLW FLOAT 22 SLWP" },
        { "X = round(FL)", "| | 22 LLW FIX 8 SLWP" },
        { "X = min(X, Y)", "| 8 LLW 12 LLW | DUP2 LESS JNZ ->4 | EXCH | POP 8 SLWP" },
        { "X = max(X, Y)", "| 8 LLW 12 LLW | DUP2 GTR JNZ ->4 | EXCH | POP 8 SLWP" },
        { "X = max(1, min(X, Y))", "| 1 8 LLW 12 LLW | DUP2 LESS JNZ ->4 | EXCH | POP | "
                                   "DUP2 GTR JNZ ->7 | EXCH | POP 8 SLWP" },
        { "K = min(K, BLUE)", "| 16 LLB 2 | DUP2 LESS JNZ ->4 | EXCH | POP 16 SLBP" },
        { "X = min(INT)", "| LIT -2147483648 8 SLWP" },
        { "N = qty(VOLTAGE)", "| 1 SLIT 54 SLBP" },
    });
}

TEST(BuiltIns, CodeOfRunTimeLengths)
{
    expect_statements({
        { "X = upb(A)", "| 4 LLW 1 SUB 8 SLWP" },
        { "X = upb(Q->LIST)", "| SLIT 42 LLW 4 ADD DUP LP EXCH 4 ADD LW EXCH POP 1 SUB 8 SLWP" },
        { "X = upb(Q->PLUGS)", "| SLIT 42 LLW 12 ADD DUP LP EXCH 4 ADD LW EXCH POP 1 SUB 8 SLWP" },
        { "X = upb(Q->MATES)", "| SLIT 42 LLW 20 ADD DUP LP EXCH 4 ADD LW EXCH POP 1 SUB 8 SLWP" },
    });
    // The run-time system knows the length of what it defines itself.
    CompiledSource items(function("X = upb(Q->PLUGS)"));
    TLI_Pragma(items.find("CONNECTOR"), "RUNTIME_DEF", "1");
    EXPECT_EQ(items.body("F"), "SLIT 34 LLW 12 ADD DUP LP EXCH 4 ADD LW UPB 1 SUB 0 SLWP");
    CompiledSource records(function("X = upb(Q->MATES)"));
    TLI_Pragma(records.find("PAIR"), "RUNTIME_DEF", "1");
    EXPECT_EQ(records.body("F"), "SLIT 34 LLW 20 ADD DUP LP EXCH 4 ADD LW UPB 1 SUB 0 SLWP");
}

TEST(BuiltIns, CodeOfDataItems)
{
    expect_statements({
        { "ANY = cvt(U, V)", "| | 18 LLW SLIT 46 LLW CVT 0 SLIT 56 SLWP" },
        { "ANY = cvt(U, V, BACKWARDS)", "| | 18 LLW SLIT 46 LLW CVT 1 SLIT 56 SLWP" },
        { "S = cvts(U, V)", "| | 18 LLW SLIT 46 LLW CVT 16 26 SLWP" },
        { "S = cvts(U, {X/CONVERTER}, BACKWARDS)", "| | 18 LLW LCA 1:X/CONVERTER CVT 17 26 SLWP" },
        { "T = attr(C, \"NAME\")", "| | SLIT 34 LLW 0 ATTR 1 30 SLWP" },
        { "P = attr(P, \"matingpoint\")", "| | SLIT 38 LLW 13 ATTR 5 SLIT 38 SLWP" },
        { "P = attr(C, \"Point\", X + 1)",
          "| | 8 LLW 1 ADD SLIT 34 LLW 12 ATTR -127 SLIT 38 SLWP" },
        { "N = attr(V, \"OLDTYPE\")", "| | SLIT 46 LLW 10 ATTR 7 SLIT 54 SLBP" },
        { "O = create(OBJECT)", "| | LCA \"{1-2}\" CREATE SLIT 50 SLWP" },
        { "create(OBJECT)", "| | LCA \"{1-2}\" CREATE POP" },
        { "release(O)", "| | SLIT 50 LLW RELEASE POP" },
    });
}

TEST(BuiltIns, CText)
{
    expect_text(
        with_array, TLC_TARGET_C,
        {
            { "X = abs(Y - 1)", "  X=abs(toll_int(0u+Y-1));\n" },
            { "X = abs(K)", "  X=abs(K);\n" },
            { "X = abs(cast(Y, COLOUR))", "  X=((INT) (((COLOUR) (Y))));\n" },
            { "U = cast(X + Y, VOLTAGE)", "  U=((VOLTAGE) (toll_int(0u+X+Y)));\n" },
            { "X = cast(Y, CHAR)", "  X=((INT) (Y));\n" },
            { "X = min(X, Y + 1) * 2", "  X=toll_int(1u*min(X,toll_int(0u+Y+1))*2);\n" },

            // A C compiler may keep an enumeration unsigned, which would turn the order round.
            { "X = cast(cast(Y, COLOUR) < K, INT)",
              "  X=((INT) ((INT) (((COLOUR) (Y)))<(INT) (K)));\n" },
            { "X = cast(min(K, GREEN) == K, INT)",
              "  X=((INT) ((INT) (min(K,M_GREEN))==(INT) (K)));\n" },
            { "X = cast(cast(Y, COLOUR) == K, INT)", "  X=((INT) (((COLOUR) (Y))==K));\n" },
            { "FL = to_float(X)", "  FL=(float) X;\n" },
            { "FL = to_float(X + Y)", "  FL=(float) (toll_int(0u+X+Y));\n" },
            { "FL = to_float(Q->LEFT)", "  FL=(float) ((PAIR_AT) toll_pointer(Q))->LEFT;\n" },
            { "X = round(FL) + 1", "  X=toll_int(0u+toll_round(FL)+1);\n" },
            { "X = upb(A)",
              "  X=/*ERROR - Runtime 'upb' not possible in 'C' */\n/*ERROR - No code "
              "generated for term */\n0/*ERROR - No code generated for term */\n;\n" },
            { "ANY = cvt(U, V)",
              "  ANY=/*ERROR - No code generation for built-in-function 'cvt' */\n/*ERROR - No "
              "code generated for term */\n0/*ERROR - No code generated for term */\n;\n" },
            { "release(O)", "  /*ERROR - No code generation for built-in-function 'release' "
                            "*/\n/*ERROR - No code generated for term */\n0;\n" },
        });
}

TEST(BuiltIns, JavaText)
{
    expect_text(with_array, TLC_TARGET_JAVA,
                {
                    { "X = abs(Y)", "  X=abs(Y);\n" },
                    { "U = cast(X, VOLTAGE)", "  U=(X);\n" },
                    { "X = min(X, Y)", "  X=min(X,Y);\n" },
                    { "FL = to_float(X * Y)", "  FL=(float) (X*Y);\n" },
                    { "X = round(FL)", "  X=(int) FL;\n" },
                    { "X = upb(A)", "  X=A.length() - 1;\n" },
                    { "X = upb(A[2])", "  X=A.length() - 1;\n" },
                    { "X = upb(Q->LIST) + 1", "  X=Q.LIST.length() - 1+1;\n" },
                    { "T = attr(C, \"NAME\")", "  T=C.getNAME();\n" },
                    { "T = attr({X/CONNECTOR}, \"NAME\")",
                      "  T=((Data) toll_item(\"CONNECTOR\", \"X\")).getNAME();\n" },
                    { "P = attr(C, \"POINT\", X)", "  P=C.getPOINT(X);\n" },
                    { "O = create(OBJECT)", "  O=new OBJECT();\n" },
                    { "release(O)", "  ;\n" },
                    { "O = release(O)", "  O=O;\n" },
                    { "release(O = create(OBJECT))", "  O=new OBJECT();\n" },
                    { "X = abs(K)", "  X=abs(K);\n" },
                    { "S = cvts(U, V)", "  S=toll_cvts(U,V,0);\n" },
                    { "ANY = cvt(X + Y, V, BACKWARDS)", "  ANY=toll_cvt(X+Y,V,1);\n" },
                    { "cvt(U, {X/CONVERTER})",
                      "  toll_cvt(U,(Data) toll_item(\"CONVERTER\", \"X\"),0);\n" },
                });
}
