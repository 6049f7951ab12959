// Names in scopes and domains: declaring, hiding, finding, room, pragmas, listings.
#include "names/tli.h"

#include "codegen/tlc.h"
#include "frontend/tlp.h"
#include "frontend/tlt.h"
#include "names/tlit.h"
#include "tests/written.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

static std::vector<std::string> messages; // "level text"

static void keep_message(TLT_STATEMENT *, int32_t level, const char *text)
{
    messages.push_back(std::to_string(level) + " " + text);
}

static int32_t append_name(void *context, const char *name, TLI_IDENTIFIER *)
{
    *static_cast<std::string *>(context) += std::string(name) + " ";
    return name[0] != 'S'; // a name in S ends the walk
}

class Identifiers : public testing::Test
{
protected:
    void SetUp() override
    {
        TLP_Initialise();
        TLT_DefaultMessageHandler(keep_message);
        messages.clear();
        domain = TLI_NewDomain("ENGINE");
        globals = TLI_NewScope(domain, "GLOBALS", TLI_STATIC_SCOPE);
        locals = TLI_NewScope(domain, "LOCALS", TLI_FRAME_SCOPE);
        TLI_PushScope(domain, globals);
    }

    void TearDown() override
    {
        TLI_DelScope(locals);
        TLI_DelScope(globals);
        TLI_DelDomain(domain);
    }

    TLI_IDENTIFIER *declare(const char *name, TLI_IDENTIFIER *type = nullptr)
    {
        return TLI_NewIdentifier(nullptr, domain, nullptr, name, type, nullptr);
    }

    std::vector<std::string> expected(std::initializer_list<std::string> texts) { return texts; }

    TLI_DOMAIN *domain = nullptr;
    TLI_SCOPE *globals = nullptr;
    TLI_SCOPE *locals = nullptr;
};

TEST_F(Identifiers, ANameIsDeclaredOnceInAScope)
{
    TLI_IDENTIFIER *first = declare("A", TLIT_IntType);
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(declare("A"), nullptr);
    EXPECT_EQ(TLI_NewScopeIdentifier(globals, nullptr, "A", nullptr, nullptr), nullptr);
    EXPECT_EQ(messages,
              expected({ "3 'A' already declared", "3 'A' already declared in scope 'GLOBALS'" }));
    EXPECT_EQ(TLI_FindScopeIdentifier(globals, "A"), first);
    EXPECT_TRUE(TLI_CheckIdentifier(first, TLI_NAME, TLIT_IntType));
    EXPECT_FALSE(TLI_CheckIdentifier(first, TLI_NAME, nullptr));
    EXPECT_FALSE(TLI_CheckIdentifier(first, TLI_VARIABLE, TLIT_IntType));
    EXPECT_EQ(TLI_IdentifierDimension(first, nullptr), -2);
}

TEST_F(Identifiers, AnInnerNameHidesAnOuterOneUntilItsScopeIsPopped)
{
    TLI_IDENTIFIER *outer = declare("A");
    TLI_PushScope(domain, locals);
    TLI_IDENTIFIER *inner = declare("A");
    ASSERT_NE(inner, nullptr);
    declare("int"); // names are compared exactly, so this hides nothing
    declare("INT"); // the language's own name
    EXPECT_EQ(messages, expected({ "1 Previous declaration of 'A' hidden",
                                   "1 Previous declaration of 'INT' hidden" }));
    EXPECT_EQ(TLI_FindDomainIdentifier(domain, "A"), inner);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "ENGINE.A"), inner);
    EXPECT_EQ(TLI_PopScope(domain), 1);
    EXPECT_EQ(TLI_FindDomainIdentifier(domain, "A"), outer);
}

TEST_F(Identifiers, WithoutAScopeNothingIsDeclared)
{
    TLI_PopScope(domain);
    EXPECT_EQ(TLI_PopScope(domain), 0);
    EXPECT_EQ(declare("A"), nullptr);
    EXPECT_EQ(messages, expected({ "4 Lost global scope??" }));
}

TEST_F(Identifiers, ADataTypeGivesWaySilently)
{
    TLP_MODULE *module = TLP_NewModule("M", nullptr);
    TLI_DOMAIN *types = TLP_DataTypeDomain(module);
    TLI_IDENTIFIER *message = TLIT_FindType(types, "MESSAGE");
    ASSERT_NE(message, nullptr);
    TLI_IDENTIFIER *user = declare("OLD", message);
    TLI_IDENTIFIER *renamed =
        TLI_NewIdentifier(types, domain, nullptr, "MESSAGE", TLIT_IntType, nullptr);
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(TLI_FindIdentifier(types, domain, "MESSAGE"), renamed);
    EXPECT_EQ(TLIT_FindType(types, "MESSAGE"), nullptr);
    // What was declared with the type still has it, whole.
    EXPECT_STREQ(TLI_IdentifierName(TLI_IdentifierType(user)), "MESSAGE");
    EXPECT_EQ(TLIT_TypeSizeof(TLI_IdentifierType(user), -1), 4);
    TLP_DelModule(module);
}

TEST_F(Identifiers, QualifiedNames)
{
    TLI_DOMAIN *used = TLI_NewDomain("USED");
    TLI_SCOPE *used_globals = TLI_NewScope(used, "GLOBALS", TLI_STATIC_SCOPE);
    TLI_PushScope(used, used_globals);
    TLI_UseDomain(domain, "USED", used);
    TLI_UseDomain(domain, "USED", domain); // the first entry stays
    TLI_UseScope(domain, "SCOPE", locals);
    const std::string long_name(27, 'N'); // "USED." and 26 characters of it fit 31
    TLI_IDENTIFIER *in_used = TLI_NewScopeIdentifier(used_globals, nullptr, "A", nullptr, nullptr);
    TLI_IDENTIFIER *cut = TLI_NewScopeIdentifier(used_globals, nullptr,
                                                 long_name.substr(0, 26).c_str(), nullptr, nullptr);
    TLI_IDENTIFIER *in_scope = TLI_NewScopeIdentifier(locals, nullptr, "A", nullptr, nullptr);
    TLI_NewScopeIdentifier(locals, nullptr, "Y.Z", nullptr, nullptr);
    const std::string whole(40, 'W');
    TLI_IDENTIFIER *own = declare(whole.c_str());

    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "USED.A"), in_used);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, ("USED." + long_name).c_str()), cut);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "SCOPE.A"), in_scope);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, whole.c_str()), own);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "A"), nullptr);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "OTHER.A"), nullptr);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "USED.B.A"), nullptr);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "ENGINE.INT"), nullptr);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "INT"), TLIT_IntType);
    EXPECT_EQ(TLI_FindUsedDomain(domain, "USED"), used);

    TLI_DelUseDomain(domain, "USED");
    EXPECT_FALSE(TLI_IsUsedDomain(domain, "USED"));
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "USED.A"), nullptr);
    TLI_DelScope(used_globals);
    TLI_DelDomain(used);
}

TEST_F(Identifiers, AQualifierIsAUsedDomainBeforeAScopeBeforeTheDomainItself)
{
    TLI_DOMAIN *used = TLI_NewDomain("ENGINE");
    TLI_SCOPE *used_globals = TLI_NewScope(used, "GLOBALS", TLI_STATIC_SCOPE);
    TLI_SCOPE *named = TLI_NewScope(domain, "ENGINE", TLI_FRAME_SCOPE);
    TLI_PushScope(used, used_globals);
    TLI_IDENTIFIER *own = declare("A");
    TLI_IDENTIFIER *in_scope = TLI_NewScopeIdentifier(named, nullptr, "A", nullptr, nullptr);
    TLI_IDENTIFIER *in_used = TLI_NewScopeIdentifier(used_globals, nullptr, "A", nullptr, nullptr);
    TLI_UseScope(domain, "ENGINE", named);
    TLI_UseDomain(domain, "ENGINE", used);
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "ENGINE.A"), in_used);
    TLI_DelUseDomain(domain, "ENGINE");
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "ENGINE.A"), in_scope);
    TLI_DelScope(named); // takes its name out of the used scopes
    EXPECT_EQ(TLI_FindIdentifier(nullptr, domain, "ENGINE.A"), own);
    TLI_DelScope(used_globals);
    TLI_DelDomain(used);
}

TEST_F(Identifiers, AScopeIsPoppedAsOftenAsItWasPushed)
{
    TLI_PushScope(domain, locals);
    TLI_PushScope(domain, locals);
    TLI_PushScope(domain, globals); // stays at the bottom
    EXPECT_EQ(TLI_GetScope(domain, nullptr), locals);
    EXPECT_EQ(TLI_ScopeAccessType(locals), TLI_LOCAL);
    EXPECT_EQ(TLI_ScopeAccessType(globals), TLI_GLOBAL);
    TLI_PopScope(domain);
    EXPECT_EQ(TLI_GetScope(domain, nullptr), locals);
    TLI_PopScope(domain);
    EXPECT_EQ(TLI_GetScope(domain, nullptr), globals);
    EXPECT_EQ(TLI_ScopeAccessType(locals), TLI_NON_LOCAL);
}

TEST_F(Identifiers, ADeletedScopeIsNotFoundOnTheStack)
{
    TLI_SCOPE *open = TLI_NewScope(domain, "OPEN", TLI_FRAME_SCOPE);
    TLI_PushScope(domain, open);
    TLI_PushScope(domain, locals);
    TLI_DelScope(open);
    EXPECT_EQ(TLI_GetScope(domain, nullptr), locals);
    TLI_PopScope(domain);
    EXPECT_EQ(TLI_GetScope(domain, nullptr), globals);
}

TEST_F(Identifiers, RoomInAScope)
{
    const struct {
        TLI_IDENTIFIER *type;
        int32_t dimension, offset, size;
    } rows[] = {
        { TLIT_CharType, -1, 0, 2 },
        { TLIT_CharType, -1, 1, 2 },
        { TLIT_CharType, 3, 2, 6 },
        { TLIT_IntType, -1, 6, 10 },
        { TLIT_ShortType, 2, 10, 14 },
        { TLIT_VoidType, -1, -1, 14 },
        { TLIT_IntType, 0, 14, 18 },
        { TLIT_CharType, -1, 18, 20 },
        { TLIT_IntType, INT32_MAX, -1, 20 },
        { TLIT_CharType, INT32_MAX - 19, -1, 20 },
        { TLIT_BoolType, -1, 19, 20 },
        { TLIT_CharType, INT32_MAX - 1 - 20, 20, INT32_MAX - 1 },
        { TLIT_CharType, -1, -1, INT32_MAX - 1 },
    };
    for (const auto &row : rows) {
        SCOPED_TRACE("row " + std::to_string(&row - rows));
        EXPECT_EQ(TLI_ScopeAllocate(locals, row.type, row.dimension), row.offset);
        EXPECT_EQ(TLI_ScopeSize(locals), row.size);
    }
    EXPECT_EQ(TLI_ScopeAllocate(globals, TLIT_CharType, -1), 0);
    EXPECT_EQ(TLI_ScopeAllocate(globals, TLIT_ShortType, -1), 2);
}

TEST_F(Identifiers, WalksGoFromTheNewestNameAndStopAtZero)
{
    std::string order;
    EXPECT_EQ(TLI_AllIdentifiers(locals, append_name, &order), 1);
    for (const char *name : { "A", "S", "B", "C" })
        declare(name);
    EXPECT_EQ(TLI_AllIdentifiers(globals, append_name, &order), 0);
    EXPECT_EQ(order, "C B S ");
    EXPECT_EQ(TLI_DelIdentifier(TLI_FindScopeIdentifier(globals, "S")), 1);
    order.clear();
    EXPECT_EQ(TLI_AllIdentifiers(globals, append_name, &order), 1);
    EXPECT_EQ(order, "C B A ");
}

static int32_t append_pragma(void *context, const char *name, const char *value)
{
    *static_cast<std::string *>(context) += std::string(name) + "=" + value + " ";
    return std::string(value) != "stop";
}

TEST_F(Identifiers, Pragmas)
{
    TLI_IDENTIFIER *identifier = declare("A");
    std::string seen;
    EXPECT_EQ(TLI_AllPragmas(identifier, append_pragma, &seen), (intptr_t)identifier);
    TLI_Pragma(identifier, "attr", "1");
    TLI_Pragma(identifier, "other", "stop");
    TLI_Pragma(identifier, std::string(40, 'x').c_str(), "long");
    TLI_Pragma(identifier, "Attr", "2");
    EXPECT_STREQ(TLI_FindPragma(identifier, "ATTR"), "2");
    EXPECT_EQ(TLI_FindPragma(identifier, "attr"), nullptr);
    EXPECT_STREQ(TLI_FindPragma(identifier, std::string(31, 'X').c_str()), "long");
    EXPECT_EQ(TLI_AllPragmas(identifier, append_pragma, &seen), 0);
    EXPECT_EQ(seen, "ATTR=2 " + std::string(31, 'X') + "=long OTHER=stop ");
}

TEST_F(Identifiers, FullNames)
{
    TLI_IDENTIFIER *identifier = declare("A");
    EXPECT_STREQ(TLI_FullName(identifier), "ENGINE.A");
    TLI_Pragma(identifier, "NOTAG", "");
    EXPECT_STREQ(TLI_FullName(identifier), "A");
    EXPECT_STREQ(TLI_FullName(TLIT_IntType), "INT");
    EXPECT_STREQ(TLI_FullName(TLIT_DataType), "DATA");
    const std::string name(31, 'N');
    EXPECT_EQ(TLI_FullName(declare(name.c_str())), "ENGINE." + name.substr(0, 24));
    EXPECT_STREQ(TLI_IdentifierName(nullptr), "<NULL IDENTIFIER>");
    EXPECT_STREQ(TLI_IdentifierName(declare(nullptr)), "");
    EXPECT_STREQ(TLI_ClassName(TLI_ARGUMENT), "ARGUMENT");
    EXPECT_STREQ(TLI_ClassName(11), "<UNKNOWN CLASS>");
    EXPECT_STREQ(TLI_ClassName(-1), "<UNKNOWN CLASS>");
}

TEST_F(Identifiers, Listings)
{
    declare("A");
    TLI_Pragma(declare("B", TLIT_IntType), "note", "x");
    TLI_DOMAIN *used = TLI_NewDomain("USED");
    TLI_UseDomain(domain, "USED", used);
    TLI_UseDomain(used, "ENGINE", domain); // a circle ends
    const std::string listing = written([&](FILE *stream) {
        TLI_PrintDomain(stream, domain, nullptr);
        TLI_PrintDomain(stream, used, nullptr);
    });
    const std::string engine = "DOMAIN ENGINE\n\n"
                               "\nSCOPE GLOBALS\n\n"
                               "NAME     NAME_CLASS         INT          B {NOTE=x}\n"
                               "NAME     NAME_CLASS         <NO TYPE>    A\n"
                               "USED SCOPES :\n\n";
    const std::string other = "DOMAIN USED\n\nUSED SCOPES :\n\n";
    EXPECT_EQ(listing, engine + other + other + engine);
    TLI_DelDomain(used);
}

// A class with one operation each, to see what reaches it.
static int32_t push_offset(TLC_STREAM *, TLI_IDENTIFIER *, int32_t offset)
{
    return offset;
}
static uint32_t counted_flags(TLI_IDENTIFIER *)
{
    return TLI_NODE | TLI_ASSIGNABLE;
}

TEST_F(Identifiers, AClassOfItsOwn)
{
    static const TLI_CLASS own_class = {
        .class_name = "OWN",
        .record_size = 1, // less than the generic part: never less is allocated
        .flags = TLI_NODE,
        .delete_operation = nullptr,
        .print = nullptr,
        .value = nullptr,
        .push_value = push_offset,
        .push_address = nullptr,
        .push_dimension = nullptr,
        .dimension = nullptr,
        .flags_function = counted_flags,
    };
    TLI_IDENTIFIER *identifier =
        TLI_NewIdentifier(nullptr, domain, nullptr, "A", TLIT_IntType, &own_class);
    EXPECT_EQ(TLI_PushValue(nullptr, identifier, 7), 7);
    EXPECT_EQ(TLI_IdentifierClass(identifier), TLI_NODE);
    EXPECT_EQ(TLI_IdentifierFlags(identifier), (uint32_t)TLI_NODE | TLI_ASSIGNABLE);
}

TEST_F(Identifiers, AClassWithoutPushOperationsIsACodeError)
{
    TLP_MODULE *module = TLP_NewModule("M", nullptr);
    TLC_STREAM *stream = TLC_NewStream(module, 0);
    TLI_IDENTIFIER *identifier = declare("A");
    testing::internal::CaptureStdout();
    EXPECT_EQ(TLI_PushValue(stream, identifier, 0), 0);
    EXPECT_EQ(TLI_PushAddress(stream, identifier, 0), 0);
    EXPECT_EQ(TLI_PushDimension(stream, identifier), 0);
    const std::string line = "NAME     NAME_CLASS         <NO TYPE>    A\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), line + line + line);
    EXPECT_EQ(messages, expected({ "4 Failed to push value", "4 Failed to push address",
                                   "4 Failed to push a dimension" }));
    TLC_DelStream(stream);
    TLP_DelModule(module);
}

TEST_F(Identifiers, AHundredThousandNamesAreDeclaredAndFoundInLinearTime)
{
    static constexpr int32_t count = 100000;
    for (int32_t i = 0; i < count; i++)
        ASSERT_NE(declare(("NAME" + std::to_string(i)).c_str()), nullptr);
    TLI_PushScope(domain, locals);
    for (int32_t i = 0; i < count; i++)
        ASSERT_NE(TLI_FindIdentifier(nullptr, domain, ("NAME" + std::to_string(i)).c_str()),
                  nullptr);
    EXPECT_TRUE(messages.empty());
}
