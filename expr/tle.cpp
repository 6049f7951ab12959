/*
 * Terms: making, deleting, asking and dumping them, the lists they form, and the table of operators.
 */
#include "expr/tle.h"

#include <algorithm>
#include <cstring>

#include "core/sh.h"
#include "names/tli.h"
#include <ostrum/tlb.h>
#include <ostrum/tlit.h>
#include <ostrum/tlo.h>
#include <ostrum/tlt.h>

static const TLE_OPERATOR *operators[TLT_TOKEN_COUNT];

void TLE_DeclareOperator(const TLE_OPERATOR *record)
{
    if (record == nullptr || record->token < 0 || record->token >= TLT_TOKEN_COUNT) return;
    operators[record->token] = record;
}

void TLE_Initialise()
{
    static bool is_done;
    if (is_done) return;
    is_done = true;
    TLO_Initialise();
    TLB_Initialise();
}

const TLE_OPERATOR *TLE_TermOperator(const TLE_TERM *term)
{
    return term->kind < 0 ? nullptr : operators[term->kind];
}

// Texts

const char *TLE_KindText(int32_t kind)
{
    static constexpr const char *texts[] = { "<EXPRESSION>", "<CALL>", "<BIF>", "<ADDRESS>",
                                             "<INDIRECT CALL>" };
    if (kind >= 0) return TLT_TokenValue(kind);
    if (kind < TLE_INDIRECT_CALL) return "<EXPRESSION>";
    return texts[-1 - kind];
}

void TLE_SetTextSpan(TLE_TERM *term, const char *text, size_t length)
{
    char *copy = static_cast<char *>(SH_AllocateBytes(length + 1));
    memcpy(copy, text, length);
    if (term->flags & TLE_OWNS_TEXT) SH_Free(const_cast<char *>(term->text));
    term->text = copy;
    term->flags |= TLE_OWNS_TEXT;
}

void TLE_SetText(TLE_TERM *term, const char *text)
{
    if (text != nullptr) {
        TLE_SetTextSpan(term, text, strlen(text));
        return;
    }
    if (term->flags & TLE_OWNS_TEXT) SH_Free(const_cast<char *>(term->text));
    term->text = nullptr;
    term->flags &= static_cast<uint8_t>(~TLE_OWNS_TEXT);
}

void TLE_KeepNumberText(TLE_TERM *term)
{
    if ((term->flags & TLE_IS_SOURCE) == 0) return;
    size_t length = 0;
    while (length < term->length && strchr(" ;\n", term->start[length]) == nullptr)
        length++;
    term->flags &= static_cast<uint8_t>(~TLE_IS_SOURCE);
    TLE_SetTextSpan(term, term->start, length);
}

// Life of a term

TLE_TERM *TLE_NewTerm(int32_t kind, int32_t use, const char *tag)
{
    TLE_TERM *term = static_cast<TLE_TERM *>(SH_AllocateRecord(sizeof(TLE_TERM), tag));
    term->kind = static_cast<int8_t>(kind);
    term->use = static_cast<uint8_t>(use & 7);
    return term;
}

static void free_term(TLE_TERM *term)
{
    if (term->flags & TLE_OWNS_TEXT) SH_Free(const_cast<char *>(term->text));
    SH_Free(term);
}

void TLE_DelExpression(TLE_TERM *term)
{
    // A left subtree is hung into the right chain before its parent, so that the chain holds all that
    // is still to be freed: no stack, whatever the tree's shape.
    while (term != nullptr) {
        TLE_TERM *next = term->left;
        if (next != nullptr) {
            term->left = next->right;
            next->right = term;
        } else {
            next = term->right;
            free_term(term);
        }
        term = next;
    }
}

TLE_TERM *TLE_ConstantTerm(int32_t use, TLI_IDENTIFIER *type, int32_t value)
{
    TLE_TERM *term = TLE_NewTerm(TLT_TOKEN_NUMBER, use, "TLE:TLE_TERM(TLE_ConstantTerm)");
    term->type = type;
    term->value = value;
    return term;
}

void TLE_CoerceTerm(TLE_TERM *term, TLI_IDENTIFIER *type)
{
    if (term != nullptr) term->type = type;
}

// Lists

TLE_TERM *TLE_Append(TLE_TERM *list, TLE_TERM *expression)
{
    TLE_TERM *link = TLE_NewTerm(TLT_TOKEN_LINK, expression == nullptr ? 0 : expression->use,
                                 "TLE:TLE_TERM(Append)");
    link->left = expression;
    link->line = expression == nullptr ? 0 : expression->line;
    if (list == nullptr) {
        link->last = link;
        return link;
    }
    // The first link knows the last; from any other, or past what was hung on since, the way is walked.
    TLE_TERM *last = list->last == nullptr ? list : list->last;
    while (last->right != nullptr)
        last = last->right;
    last->right = link;
    list->last = link;
    return list;
}

TLE_TERM *TLE_NthExpression(TLE_TERM *list, int32_t index)
{
    if (index < 0) return nullptr;
    while (list != nullptr && index-- > 0)
        list = list->right;
    return list == nullptr ? nullptr : list->left;
}

TLE_TERM *TLE_CallArgument(TLE_TERM *term, int32_t index)
{
    if (term == nullptr || (term->kind != TLE_CALL && term->kind != TLE_BUILT_IN)) return nullptr;
    return TLE_NthExpression(term->left, index);
}

// Questions

static bool is_selection(const TLE_TERM *term)
{
    return term->kind == TLT_TOKEN_COLON || term->kind == TLT_TOKEN_ARROW;
}

TLE_TERM *TLE_BaseTerm(TLE_TERM *term)
{
    while (term != nullptr && is_selection(term))
        term = term->left;
    return term;
}

int32_t TLE_CheckLHS(TLE_TERM *term)
{
    const TLE_TERM *base = TLE_BaseTerm(term);
    if (base == nullptr || base->identifier == nullptr) return 0;
    return (TLI_IdentifierFlags(base->identifier) & TLI_ASSIGNABLE) != 0;
}

int32_t TLE_CheckSimpleCall(const TLE_TERM *term)
{
    return term != nullptr && term->kind == TLE_CALL && term->right == nullptr;
}

TLI_IDENTIFIER *TLE_Type(const TLE_TERM *term)
{
    if (term == nullptr || term->identifier == nullptr) return nullptr;
    return TLI_IdentifierClass(term->identifier) == TLI_TYPE ? term->identifier : nullptr;
}

TLI_IDENTIFIER *TLE_TermIdentifier(const TLE_TERM *term)
{
    while (term != nullptr && is_selection(term))
        term = term->right;
    return term == nullptr ? nullptr : term->identifier;
}

const char *TLE_TermValue(const TLE_TERM *term)
{
    if (term == nullptr) return "";
    if (term->flags & TLE_IS_SOURCE) TLE_KeepNumberText(const_cast<TLE_TERM *>(term));
    return term->text == nullptr ? "" : term->text;
}

TLI_IDENTIFIER *TLE_ExpressionType(const TLE_TERM *term)
{
    return term == nullptr ? nullptr : term->type;
}

int32_t TLE_Constant(const TLE_TERM *term, int32_t *value)
{
    if (term == nullptr || term->kind != TLT_TOKEN_NUMBER || term->right != nullptr) return 0;
    *value = term->value;
    return 1;
}

char *TLE_ExpressionChars(const TLE_TERM *term)
{
    const bool is_parsed =
        term != nullptr && term->kind != TLT_TOKEN_LINK && term->start != nullptr;
    const size_t length = is_parsed ? term->length : 0;
    char *chars =
        static_cast<char *>(SH_NameAllocate(static_cast<int32_t>(length + 1), "TLE:ExprChars"));
    if (length != 0) memcpy(chars, term->start, length);
    return chars;
}

const char *TLE_TypeText(const TLE_TERM *term)
{
    if (term == nullptr) return "<VOID>";
    return term->type == nullptr ? "<UNTYPED>" : term->type->name;
}

// Dump

// Beyond this column a dump stays where it is: a long chain would be all spaces.
static constexpr int32_t deepest_indent = 120;

static void print_term(const char *label, const TLE_TERM *term, int32_t indent)
{
    printf("%*s%s", std::min(indent, deepest_indent), "", label);
    printf("(%s/%d) %s ", TLE_TypeText(term), term->use, TLE_KindText(term->kind));
    if (term->kind == TLT_TOKEN_NUMBER) {
        printf("%d\n", term->value);
    } else {
        printf("%s\n", term->text == nullptr ? "" : term->text);
    }
}

struct DUMP_ENTRY {
    const TLE_TERM *term;
    const char *label;
    int32_t indent;
};

void TLE_PrintExpression(const char *title, const TLE_TERM *term, int32_t indent)
{
    printf("%*s%s\n", std::clamp(indent, 0, deepest_indent), "", title);
    size_t count = 0;
    size_t capacity = 16 * sizeof(DUMP_ENTRY);
    DUMP_ENTRY *stack = static_cast<DUMP_ENTRY *>(SH_AllocateBytes(capacity));
    if (term != nullptr) stack[count++] = { term, "{HEAD}", indent + 2 };
    while (count != 0) {
        const DUMP_ENTRY entry = stack[--count];
        print_term(entry.label, entry.term, entry.indent);
        stack = static_cast<DUMP_ENTRY *>(SH_Grow(stack, count * sizeof(DUMP_ENTRY), &capacity,
                                                  (count + 2) * sizeof(DUMP_ENTRY)));
        if (entry.term->left != nullptr)
            stack[count++] = { entry.term->left, "{L}", entry.indent + 2 };
        if (entry.term->right != nullptr)
            stack[count++] = { entry.term->right, "{R}", entry.indent + 2 };
    }
    SH_Free(stack);
}
