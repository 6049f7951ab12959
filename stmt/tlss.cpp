/*
 * SWITCH, NODE, SUBTREE, LEAF and GOTO: the classes of their records, and the parser of each
 * statement.
 */
#include "stmt/tlss.h"

#include "names/tlit.h"
#include <ostrum/sh.h>
#include <ostrum/st.h>
#include <ostrum/tle.h>
#include <ostrum/tli.h>
#include <ostrum/tlic.h>
#include <ostrum/tlp.h>

enum : int32_t { NO_VALUE = -1 };

static TLS_STATEMENT *last_statement(TLS_BLOCK *root)
{
    return TLS_LastStatement(root->current);
}

/* ---- SWITCH, NODE, SUBTREE, LEAF ---- */

/* Expects a name; gives a copy, or null after an error. */
static char *expect_name(TLT_STATEMENT *statement)
{
    char name[TLT_TEXT_SIZE];
    return TLT_Expect(statement, TLT_TOKEN_IDENTIFIER, name) ? ST_Allocate(name) : nullptr;
}

static void declare_node(TLS_BLOCK *root, TLT_STATEMENT *statement, TLSS_SWITCH *record)
{
    record->node_name = expect_name(statement);
    if (record->node_name == nullptr) return;
    record->node_identifier =
        TLIC_Node(TLP_DataTypeDomain(root->module), TLP_ModuleDomain(root->module), statement,
                  record->node_name, nullptr, record);
}

static void read_expression(TLS_BLOCK *root, TLT_STATEMENT *statement, TLSS_SWITCH *record)
{
    record->has_expression = TLT_NextToken(statement, nullptr) != TLT_TOKEN_END_OF_LINE;
    if (record->has_expression) {
        record->expression =
            TLE_ParseExpression(root->module, statement, TLE_USE_CONDITION, TLT_TOKEN_NONE);
        record->expression_type = TLE_ExpressionType(record->expression);
    } else if (record->token != TLT_TOKEN_LEAF) {
        TLT_Error(statement, "No expression for SWITCH or NODE");
    }
}

static void check_selector(TLS_BLOCK *root, TLT_STATEMENT *statement, TLI_IDENTIFIER *type)
{
    if (TLIT_IsEnumeration(type)) return;
    if (TLIT_MatchType(root->module, statement, TLIT_IntType, type)) return;
    TLT_Error(statement, "SWITCH condition must be INT or ENUM");
}

static void check_result(TLS_BLOCK *root, TLT_STATEMENT *statement, const TLSS_SWITCH *record)
{
    TLI_IDENTIFIER *wanted = TLI_IdentifierType(TLS_FunctionIdentifier(root->head));
    if (record->has_expression) {
        TLS_CheckType(root, statement, record->expression, wanted);
    } else if (wanted != TLIT_VoidType) {
        TLT_Error(statement, "No value supplied with LEAF statement");
    }
}

static void check_type(TLS_BLOCK *root, TLT_STATEMENT *statement, const TLSS_SWITCH *record)
{
    if (record->token == TLT_TOKEN_LEAF) {
        check_result(root, statement, record);
    } else if (record->expression_type == nullptr) {
        TLT_Error(statement, "Illegal type for SWITCH");
    } else if (record->token == TLT_TOKEN_SWITCH) {
        check_selector(root, statement, record->expression_type);
    }
}

void TLSS_SwitchStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLS_STATEMENT *common =
        TLS_NewStatement("TLSS:SWITCH", sizeof(TLSS_SWITCH), &TLSS_SwitchClass, statement);
    TLSS_SWITCH *record = TLSS_AsSwitch(common);
    record->token = TLT_GetToken(statement, nullptr);
    record->lowest_case = INT32_MAX;
    record->tail = &record->legs;
    if (record->token != TLT_TOKEN_SWITCH) declare_node(root, statement, record);
    read_expression(root, statement, record);
    check_type(root, statement, record);
    TLS_Append(root, common);
}

/* ---- CASE ---- */

static TLSS_CASE *new_leg(TLSS_SWITCH *record, TLT_STATEMENT *statement)
{
    auto *leg = static_cast<TLSS_CASE *>(SH_NameAllocate(sizeof(TLSS_CASE), "TLSS:CASE"));
    leg->statement = statement;
    *record->tail = leg;
    record->tail = &leg->next;
    return leg;
}

static void link_value(TLSS_CASE *leg, int32_t value, const char *name)
{
    auto *link =
        static_cast<TLSS_CASE_VALUE *>(SH_NameAllocate(sizeof(TLSS_CASE_VALUE), "TLSS:CASE_VALUE"));
    link->value = value;
    link->name = ST_Allocate(name);
    link->next = leg->values;
    leg->values = link;
}

static void add_value(TLSS_SWITCH *record, TLSS_CASE *leg, int32_t value, const char *name)
{
    if (value < 0) {
        TLT_Error(leg->statement, "CASE values must be in range 0 and 0x7FFFFFFF");
        return;
    }
    if (TLSS_AddToSet(&record->values, value)) {
        link_value(leg, value, name);
    } else {
        TLT_Error(leg->statement, "Multiple CASE value");
    }
    if (value > record->highest_case) record->highest_case = value;
    if (value < record->lowest_case) record->lowest_case = value;
}

/* The number that a value stands for; NO_VALUE for texts, data and all that is no constant. */
static int32_t constant_number(TLS_BLOCK *root, TLT_STATEMENT *statement, TLE_TERM *term,
                               TLI_IDENTIFIER *wanted)
{
    if (TLE_ExpressionType(term) == nullptr || wanted == nullptr) return NO_VALUE;
    intptr_t word = 0;
    int32_t number = NO_VALUE;
    if (!TLE_ConstantValue(root->module, statement, term, wanted, &word, 0)) return NO_VALUE;
    return TLE_Constant(term, &number) ? number : NO_VALUE;
}

static int32_t read_value(TLS_BLOCK *root, TLT_STATEMENT *statement, const TLSS_SWITCH *record)
{
    if (TLT_NextToken(statement, nullptr) == TLT_TOKEN_GOTO) return NO_VALUE;
    TLE_TERM *term = TLE_ParseExpression(root->module, statement, TLE_USE_VALUE, TLT_TOKEN_GOTO);
    int32_t value = constant_number(root, statement, term, record->expression_type);
    TLE_DelExpression(term);
    return value;
}

static void read_values(TLS_BLOCK *root, TLSS_SWITCH *record, TLSS_CASE *leg)
{
    char name[TLT_TEXT_SIZE];
    do {
        TLT_NextToken(leg->statement, name);
        add_value(record, leg, read_value(root, leg->statement, record), name);
    } while (TLT_PossibleToken(leg->statement, TLT_TOKEN_COMMA, nullptr));
}

static void read_target(TLSS_CASE *leg)
{
    char name[TLT_TEXT_SIZE];
    if (!TLT_Expect(leg->statement, TLT_TOKEN_GOTO, nullptr)) return;
    if (TLT_GetToken(leg->statement, name) == TLT_TOKEN_IDENTIFIER) {
        leg->goto_name = ST_Allocate(name);
    } else {
        TLT_Error(leg->statement, "Unconnected Leg");
    }
}

void TLSS_CaseStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLSS_SWITCH *record = TLSS_AsSwitch(last_statement(root));
    if (record == nullptr) {
        TLT_Error(statement, "CASE not part of a SWITCH statement");
        return;
    }
    TLT_GetToken(statement, nullptr);
    TLSS_CASE *leg = new_leg(record, statement);
    read_values(root, record, leg);
    if (record->token == TLT_TOKEN_SWITCH) {
        leg->block = TLS_SubBlock(root);
    } else {
        read_target(leg);
    }
}

/* ---- DEFAULT ---- */

void TLSS_DefaultStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLSS_SWITCH *record = TLSS_AsSwitch(last_statement(root));
    TLT_GetToken(statement, nullptr);
    if (record == nullptr) {
        TLT_Error(statement, "DEFAULT not part of a SWITCH statement");
    } else if (record->default_block != nullptr) {
        TLT_Error(statement, "SWITCH statement already has a DEFAULT");
    } else {
        record->default_block = TLS_SubBlock(root);
    }
}

/* ---- GOTO, BREAK ---- */

void TLSS_GotoStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLSS_SWITCH *owner = TLSS_AsSwitch(last_statement(root));
    if (owner == nullptr || owner->legs != nullptr) {
        TLT_Error(statement, "GOTO only permitted after a NODE");
        return;
    }
    TLS_STATEMENT *common =
        TLS_NewStatement("TLSS:GOTO", sizeof(TLSS_GOTO), &TLSS_GotoClass, statement);
    auto *record = reinterpret_cast<TLSS_GOTO *>(common);
    record->owner = owner;
    TLT_GetToken(statement, nullptr);
    record->name = expect_name(statement);
    TLS_Append(root, common);
}

void TLSS_BreakStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLSS_SWITCH *record = TLSS_AsSwitch(last_statement(root));
    TLT_GetToken(statement, nullptr);
    TLT_Error(statement, "Unconnected Leg");
    if (record == nullptr) {
        TLT_Error(statement, "BREAK not part of a NODE statement");
    } else if (record->legs != nullptr) {
        TLT_Error(statement, "BREAK not permitted with CASE's");
    } else {
        record->no_fall = true;
    }
}

/* ---- Deletion ---- */

static void delete_values(TLSS_CASE_VALUE *value)
{
    while (value != nullptr) {
        TLSS_CASE_VALUE *next = value->next;
        ST_Free(value->name);
        SH_Free(value);
        value = next;
    }
}

static void delete_legs(TLSS_CASE *leg)
{
    while (leg != nullptr) {
        TLSS_CASE *next = leg->next;
        delete_values(leg->values);
        ST_Free(leg->goto_name);
        TLS_DelBlock(leg->block);
        SH_Free(leg);
        leg = next;
    }
}

static void delete_switch(TLS_STATEMENT *common)
{
    TLSS_SWITCH *record = TLSS_AsSwitch(common);
    ST_Free(record->node_name);
    TLE_DelExpression(record->expression);
    delete_legs(record->legs);
    TLS_DelBlock(record->default_block);
    SH_Free(record->values.places);
    SH_Free(record);
}

static void delete_goto(TLS_STATEMENT *record)
{
    ST_Free(reinterpret_cast<TLSS_GOTO *>(record)->name);
    SH_Free(record);
}

/* ---- Classes ---- */

const TLSS_CALLBACKS *TLSS_Callbacks;

const TLS_STATEMENT_CLASS TLSS_SwitchClass = {
    .flags = 0,
    .print = TLSS_PrintSwitch,
    .check = TLSS_CheckSwitch,
    .p_code = TLSS_SwitchCode,
    .c_code = TLSS_SwitchCText,
    .java_code = TLSS_SwitchJavaText,
    .delete_statement = delete_switch,
    .tree = TLSS_SwitchTree,
    .node_section = TLSS_NodePSect,
    .tree_callbacks = &TLSS_Callbacks,
};

const TLS_STATEMENT_CLASS TLSS_GotoClass = {
    .flags = TLS_NO_PASS,
    .print = TLSS_PrintGoto,
    .check = TLSS_CheckGoto,
    .p_code = TLSS_GotoCode,
    .c_code = TLSS_GotoCText,
    .java_code = TLSS_GotoJavaText,
    .delete_statement = delete_goto,
    .tree = TLSS_GotoTree,
    .node_section = nullptr,
    .tree_callbacks = &TLSS_Callbacks,
};

void TLSS_Initialise(void) {}
