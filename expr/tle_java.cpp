/*
 * Expressions as Java text. Java works its operands out from left to right as P-code does, and its
 * int wraps as a word of P-code does; what differs is written through the methods of Diagnostic.
 *
 * A truth value is a word of 0 or 1, as all enumerations are words. Java's own comparisons give a
 * boolean, which stands as it is where a condition is wanted and becomes a word elsewhere.
 */
#include "expr/tle_java.h"
#include "host/host.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "codegen/tlc.h"
#include "codegen/tlcj.h"
#include "expr/tlb.h"
#include "expr/tle_c.h"
#include "expr/tlo.h"
#include "names/tliv.h"
#include <ostrum/eep.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

/* ---- What a term is ---- */

static bool is_selection(const TLE_TERM *term)
{
    return term->kind == TLT_TOKEN_COLON || term->kind == TLT_TOKEN_ARROW;
}

/* Does the text give a boolean by itself? */
static bool is_truth(const TLE_TERM *term)
{
    switch (term->kind) {
    case TLT_TOKEN_EQUAL:
    case TLT_TOKEN_NOT_EQUAL:
    case TLT_TOKEN_LESS:
    case TLT_TOKEN_LESS_EQUAL:
    case TLT_TOKEN_GREATER:
    case TLT_TOKEN_GREATER_EQUAL:
    case TLT_TOKEN_AND:
    case TLT_TOKEN_OR:
    case TLT_TOKEN_NOT:
        return true;
    default:
        return false;
    }
}

static bool wants_truth(const TLE_TERM *outer)
{
    return outer->kind == TLT_TOKEN_AND || outer->kind == TLT_TOKEN_OR ||
           outer->kind == TLT_TOKEN_NOT;
}

/* The field that a selection ends with; any other term itself. */
static TLE_TERM *last_field(TLE_TERM *term)
{
    while (is_selection(term) && term->right != nullptr)
        term = term->right;
    return term;
}

static bool is_enumeration(TLI_IDENTIFIER *type)
{
    return TLIT_TypeSubclass(nullptr, type) == TLIT_SUBCLASS_ENUMERATION;
}

bool TLE_HasEffects(const TLE_TERM *term)
{
    for (; term != nullptr; term = term->left) {
        bool is_effect = term->kind == TLE_CALL || term->kind == TLE_INDIRECT_CALL ||
                         term->kind == TLT_TOKEN_ASSIGN;
        if (is_effect || (term->right != nullptr && TLE_HasEffects(term->right))) return true;
    }
    return false;
}

bool TLE_IsJavaConstant(const TLE_TERM *term)
{
    for (; term != nullptr; term = term->left) {
        if (term->kind == TLT_TOKEN_IDENTIFIER && term->identifier != nullptr &&
            TLI_IdentifierClass(term->identifier) != TLI_CONSTANT) {
            return false;
        }
        bool is_call =
            term->kind == TLE_CALL || term->kind == TLE_INDIRECT_CALL || term->kind == TLE_BUILT_IN;
        if (is_call || (term->right != nullptr && !TLE_IsJavaConstant(term->right))) return false;
    }
    return true;
}

/* ---- Names ---- */

static bool is_item(TLI_IDENTIFIER *identifier)
{
    int32_t kind = TLI_IdentifierClass(identifier);
    return kind == TLI_VARIABLE || kind == TLI_ARGUMENT || kind == TLI_CONSTANT;
}

/* The function whose frame holds an item; null for what is no function's. */
static TLI_SCOPE *frame_of(TLI_IDENTIFIER *identifier)
{
    TLI_SCOPE *scope = TLI_IdentifierScope(identifier);
    bool has_frame = scope != nullptr && TLI_ScopeType(scope) == TLI_FRAME_SCOPE;
    return has_frame && is_item(identifier) ? scope : nullptr;
}

/* Writes the name under which the function being written reaches an item. */
static void write_name(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    char name[TLCJ_NAME_CAPACITY];
    const TLCJ_STATE *state = TLCJ_State(stream);
    const TLI_SCOPE *frame = frame_of(identifier);
    if (frame != nullptr && frame == state->frame) {
        if (state->has_frame) HOST_PutText(stream->file, "toll_frame.");
    } else if (frame != nullptr && state->frame != nullptr && frame->identifier != nullptr) {
        std::fprintf(stream->file, "toll_top_%s.", TLCJ_OwnName(stream, frame->identifier, name));
    }
    HOST_PutText(stream->file, TLCJ_Name(stream, identifier, name));
}

/* ---- Literals ---- */

static TLI_IDENTIFIER *enumeration_value(const TLE_TERM *term)
{
    return is_enumeration(term->type) ? TLIT_EnumGetValue(term->type, term->value) : nullptr;
}

/* The values of a function's own enumerations are known to it alone. */
static bool is_known(TLC_STREAM *stream, TLI_IDENTIFIER *value)
{
    const TLI_SCOPE *scope = TLI_IdentifierScope(value);
    if (scope == nullptr || TLI_ScopeType(scope) != TLI_FRAME_SCOPE) return true;
    const TLCJ_STATE *state = TLCJ_State(stream);
    return scope == state->frame && !state->has_frame;
}

static int32_t write_number(TLC_STREAM *stream, const TLE_TERM *term)
{
    char name[TLCJ_NAME_CAPACITY];
    TLI_IDENTIFIER *value = enumeration_value(term);
    if (value != nullptr && is_known(stream, value)) {
        HOST_PutText(stream->file, TLCJ_Name(stream, value, name));
    } else {
        TLC_Literal(stream, term->value);
    }
    return 1;
}

/* The one object that stands for a function, so that two uses of it compare equal. */
static int32_t write_function(TLC_STREAM *stream, TLI_IDENTIFIER *type, TLI_IDENTIFIER *function)
{
    FILE *file = stream->file;
    char name[TLCJ_NAME_CAPACITY];
    if (function != nullptr && type != nullptr &&
        TLIT_TypeSubclass(nullptr, type) == TLIT_SUBCLASS_DATA) {
        TLCJ_WriteItem(stream, function);
        return 1;
    }
    bool is_type = type != nullptr && TLIT_TypeSubclass(nullptr, type) == TLIT_SUBCLASS_FUNCTION &&
                   TLI_IdentifierClass(type) == TLI_TYPE;
    if (function == nullptr || !is_type) return 0;
    const char *owner = TLCJ_State(stream)->class_name;
    const char *method = TLCJ_Name(stream, function, name);
    if (char *point = std::strchr(name, '.'); point != nullptr) {
        *point = '\0';
        owner = name;
        method = point + 1;
    }
    std::fprintf(file, "toll_function(\"%s %s.%s\", (", TLI_IdentifierName(type), owner, method);
    TLCJ_WriteType(stream, type);
    std::fprintf(file, ") %s::%s)", owner, method);
    return 1;
}

/* Items stand outside; the program's own table knows them by type and name. */
void TLE_JavaDataLiteral(TLC_STREAM *stream, TLE_TERM *term)
{
    FILE *file = stream->file;
    TLI_IDENTIFIER *type = term->type;
    bool is_object = TLCJ_Kind(type) == TLCJ_OBJECT;
    if (is_object) {
        HOST_PutText(file, "(");
        TLCJ_WriteType(stream, type);
        HOST_PutText(file, ") ");
    }
    bool is_pointer = TLIT_TypeSubclass(nullptr, type) == TLIT_SUBCLASS_POINTER;
    TLI_IDENTIFIER *named = is_pointer ? TLIT_PointerAt(type) : type;
    HOST_PutText(file, is_object ? "toll_item(" : "toll_value(");
    TLC_String(stream, TLI_IdentifierName(named));
    HOST_PutText(file, ", ");
    TLC_String(stream, TLE_TermValue(term));
    HOST_PutText(file, ")");
}

/* ---- Items ---- */

/* How much of the way to an item is written. */
enum REACH {
    REACH_ITEM,  /* all of it */
    REACH_NAME,  /* up to the name: no subscript */
    REACH_RECORD /* of a field: up to the record that holds it, without the point */
};

static int32_t write_value(TLC_STREAM *stream, TLE_TERM *term)
{
    return TLE_TermCode(stream, term, TLE_MODE_VALUE);
}

static bool is_boxed(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    return is_item(identifier) && TLCJ_IsBoxed(stream, identifier);
}

static int32_t write_subscript(TLC_STREAM *stream, TLE_TERM *term)
{
    TLI_IDENTIFIER *identifier = term->identifier;
    bool is_vector = TLCJ_IsVector(identifier);
    if (term->left == nullptr) {
        if (TLCJ_IsReference(identifier)) HOST_PutText(stream->file, ".get(0)");
        if (is_boxed(stream, identifier)) HOST_PutText(stream->file, "[0]");
        return 1;
    }
    HOST_PutText(stream->file, is_vector ? ".get(" : "[");
    int32_t written = write_value(stream, term->left);
    HOST_PutText(stream->file, is_vector ? ")" : "]");
    return written;
}

static int32_t write_identifier(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term->identifier == nullptr) return 0;
    write_name(stream, term->identifier);
    return write_subscript(stream, term);
}

struct JAVA_PLACE {
    const TLE_TERM *outer; /* operator that the text stands beside; null for none */
    bool is_right;
    bool is_condition; /* a boolean is wanted */
};

static constexpr JAVA_PLACE FREE_PLACE = { .outer = nullptr,
                                           .is_right = false,
                                           .is_condition = false };

static int32_t write_at(TLC_STREAM *stream, TLE_TERM *term, const JAVA_PLACE &place);

/* Writes the way to a place. Selections stand in one another at the right as deep as brackets do. */
static int32_t write_reach(TLC_STREAM *stream, TLE_TERM *term, REACH reach)
{
    if (!is_selection(term)) {
        if (term->kind != TLT_TOKEN_IDENTIFIER) return write_value(stream, term);
        if (term->identifier == nullptr) return 0;
        write_name(stream, term->identifier);
        return reach == REACH_ITEM ? write_subscript(stream, term) : 1;
    }
    if (term->left == nullptr || term->right == nullptr) return 0;
    JAVA_PLACE place = { .outer = term, .is_right = false, .is_condition = false };
    int32_t written = write_at(stream, term->left, place);
    if (reach == REACH_RECORD && !is_selection(term->right)) return written;
    HOST_PutText(stream->file, ".");
    return written & write_reach(stream, term->right, reach);
}

/* ---- References ---- */

/* The object that holds the variables of a function. */
static void write_object_of(TLC_STREAM *stream, const TLI_SCOPE *frame)
{
    char name[TLCJ_NAME_CAPACITY];
    if (frame == TLCJ_State(stream)->frame) {
        HOST_PutText(stream->file, "toll_frame");
    } else {
        std::fprintf(stream->file, "toll_top_%s", TLCJ_OwnName(stream, frame->identifier, name));
    }
}

/* A reference to an item that Java has no array for: how to read it, how to write it. */
static int32_t write_accessors(TLC_STREAM *stream, TLE_TERM *term)
{
    static constexpr const char *values[] = { "toll_v", "(char) (toll_v & 255)", "(short) toll_v",
                                              "toll_v", "toll_v" };
    char name[TLCJ_NAME_CAPACITY];
    TLE_TERM *last = last_field(term);
    TLCJ_KIND kind = TLCJ_Kind(last->type);
    const char *item = kind == TLCJ_OBJECT || kind == TLCJ_FLOAT ? "_item" : "";
    const TLI_SCOPE *frame = frame_of(last->identifier);
    if (last == term && frame == nullptr) {
        TLCJ_Name(stream, last->identifier, name);
        std::fprintf(stream->file, "toll_static%s(() -> %s, toll_v -> %s = %s)", item, name, name,
                     values[kind]);
        return 1;
    }
    int32_t written = 1;
    std::fprintf(stream->file, "toll_field%s(", item);
    if (last != term) {
        written = write_reach(stream, term, REACH_RECORD);
    } else {
        write_object_of(stream, frame);
    }
    TLCJ_OwnName(stream, last->identifier, name);
    std::fprintf(stream->file, ", toll_r -> toll_r.%s, (toll_r, toll_v) -> toll_r.%s = %s)", name,
                 name, values[kind]);
    return written;
}

/* A local variable of which something keeps a reference has to be an array. */
static bool box(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    const TLCJ_STATE *state = TLCJ_State(stream);
    if (TLI_IdentifierClass(identifier) == TLI_CONSTANT || state->has_frame) return false;
    const TLI_SCOPE *frame = frame_of(identifier);
    if (frame == nullptr || (state->frame != nullptr && state->frame != frame)) return false;
    TLCJ_Mark(stream, identifier);
    return true;
}

static int32_t write_copy(TLC_STREAM *stream, TLE_TERM *term)
{
    HOST_PutText(stream->file, "toll_copy(");
    int32_t written = write_value(stream, term);
    HOST_PutText(stream->file, ")");
    return written;
}

static int32_t write_element_reference(TLC_STREAM *stream, TLE_TERM *term)
{
    HOST_PutText(stream->file, "toll_from(");
    int32_t written = write_reach(stream, term, REACH_NAME);
    HOST_PutText(stream->file, ", ");
    written &= write_value(stream, last_field(term)->left);
    HOST_PutText(stream->file, ")");
    return written;
}

/* Writes an object that stands for an item and those behind it in its array. */
static int32_t write_reference(TLC_STREAM *stream, TLE_TERM *term)
{
    TLE_TERM *last = last_field(term);
    TLI_IDENTIFIER *identifier = last->identifier;
    bool is_named = last->kind == TLT_TOKEN_IDENTIFIER && identifier != nullptr;
    if (!is_named) return write_copy(stream, term);
    if (last->left != nullptr) return write_element_reference(stream, term);
    if (TLCJ_IsVector(identifier) || TLCJ_IsReference(identifier)) {
        return write_reach(stream, term, REACH_NAME);
    }
    bool is_array = (TLI_IdentifierFlags(identifier) & TLI_DIMENSIONED) != 0;
    if (is_array || (last == term && box(stream, identifier))) {
        HOST_PutText(stream->file, "toll_all(");
        int32_t written = write_reach(stream, term, REACH_NAME);
        HOST_PutText(stream->file, ")");
        return written;
    }
    bool is_fixed = TLI_IdentifierClass(identifier) == TLI_CONSTANT;
    bool is_record = TLIT_IsRecordType(last->type) != 0;
    return is_fixed || is_record ? write_copy(stream, term) : write_accessors(stream, term);
}

/* Records are objects, which stand for themselves. */
static bool is_one_record(const TLE_TERM *term)
{
    if (term->type == nullptr || !TLIT_IsRecordType(term->type)) return false;
    TLI_IDENTIFIER *identifier = TLE_TermIdentifier(term);
    const TLE_TERM *last = last_field(const_cast<TLE_TERM *>(term));
    bool is_array =
        identifier != nullptr && (TLI_IdentifierFlags(identifier) & TLI_DIMENSIONED) != 0;
    return !is_array || last->left != nullptr;
}

static int32_t write_address(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    bool is_object = mode == TLE_MODE_ADDRESS && is_one_record(term);
    return is_object ? write_value(stream, term) : write_reference(stream, term);
}

/* ---- Operators ---- */

/* Operators that are written as a method of Diagnostic. */
static const char *method_of(const TLE_TERM *term)
{
    int32_t divisor = 1;
    switch (term->kind) {
    case TLT_TOKEN_STAR:
    case TLT_TOKEN_SLASH:
    case TLT_TOKEN_MOD:
        break;
    default:
        return nullptr;
    }
    switch (term->extra & TLO_CODE_MASK) {
    case EEP_SMUL:
        return "toll_smul";
    case EEP_SDIV:
        return "toll_sdiv";
    case EEP_DIV:
        /* javac warns of a literal 0. */
        return TLE_Constant(term->right, &divisor) && divisor == 0 ? "toll_div" : nullptr;
    case EEP_REM:
        return TLE_Constant(term->right, &divisor) && divisor == 0 ? "toll_rem" : nullptr;
    default:
        return nullptr;
    }
}

static bool is_comparison(const TLE_TERM *term)
{
    return is_truth(term) && !wants_truth(term);
}

static bool is_comparison_of_texts(const TLE_TERM *term)
{
    return is_comparison(term) && term->extra != 0;
}

static bool needs_method_to_store(TLC_STREAM *stream, TLE_TERM *term);

static bool is_in_object(TLE_TERM *place)
{
    const TLE_TERM *last = last_field(place);
    bool is_name = last->kind == TLT_TOKEN_IDENTIFIER && last->identifier != nullptr;
    if (!is_name) return false;
    bool is_element = TLCJ_IsVector(last->identifier) && last->left != nullptr;
    return is_element || TLCJ_IsReference(last->identifier);
}

bool TLE_IsJavaItem(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term == nullptr) return false;
    if (term->kind != TLT_TOKEN_ASSIGN) return is_in_object(term);
    if (term->left == nullptr || term->right == nullptr) return false;
    return needs_method_to_store(stream, term) || is_in_object(term->left);
}

/* The level at which a term's own text binds. */
static int32_t own_level(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term->kind == TLT_TOKEN_ASSIGN) {
        return TLE_IsJavaItem(stream, term) ? TLE_LEVEL_OPERAND : TLE_LEVEL_ASSIGNMENT;
    }
    return method_of(term) != nullptr ? static_cast<int32_t>(TLE_LEVEL_OPERAND)
                                      : TLE_TextLevel(term);
}

static bool is_object(const TLE_TERM *term)
{
    return term != nullptr && term->kind != TLT_TOKEN_NULL && term->type != nullptr &&
           TLCJ_Kind(term->type) == TLCJ_OBJECT;
}

/* P-code compares words, or the texts that these lead to. */
static const char *comparison_method(const TLE_TERM *term, const JAVA_PLACE &place)
{
    if (!is_comparison(place.outer) || term->type == nullptr) return nullptr;
    if (is_comparison_of_texts(place.outer)) {
        bool is_carried = !is_object(term) && term->kind != TLT_TOKEN_NULL;
        return is_carried ? "(String) toll_object_of_word(" : nullptr;
    }
    if (term->type == TLIT_FloatType) return "toll_word_of_float(";
    const TLE_TERM *other = place.is_right ? place.outer->left : place.outer->right;
    bool is_among_words = other != nullptr && other->kind != TLT_TOKEN_NULL &&
                          other->kind != TLE_ADDRESS && !is_object(other);
    return is_object(term) && is_among_words ? "toll_word_of_object(" : nullptr;
}

/* What a place makes of a term's own text. */
struct SHAPE {
    bool has_brackets;  /* round it all */
    bool is_word;       /* a boolean becomes a word */
    bool is_test;       /* a word becomes a boolean */
    bool has_inner;     /* brackets before the test */
    const char *method; /* makes another kind of value of it, as its partner in a comparison asks */
};

static SHAPE shape_of(TLC_STREAM *stream, TLE_TERM *term, const JAVA_PLACE &place)
{
    SHAPE shape = {};
    bool gives_truth = is_truth(term);
    int32_t level = own_level(stream, term);
    shape.is_word = gives_truth && !place.is_condition;
    shape.is_test = !gives_truth && place.is_condition;
    shape.has_inner = shape.is_test && level <= TLE_LEVEL_EQUALITY;
    if (shape.is_word) level = TLE_LEVEL_OPERAND;
    if (shape.is_test) level = TLE_LEVEL_EQUALITY;
    if (place.outer == nullptr) return shape;
    shape.method = comparison_method(term, place);
    if (shape.method != nullptr) return shape;
    /* The operands of a method are apart from one another. */
    if (method_of(place.outer) != nullptr || is_comparison_of_texts(place.outer)) return shape;
    shape.has_brackets = TLE_NeedsBrackets(TLE_TextLevel(place.outer), level, place.is_right);
    return shape;
}

static void open_shape(TLC_STREAM *stream, const SHAPE &shape)
{
    if (shape.method != nullptr) HOST_PutText(stream->file, shape.method);
    if (shape.has_brackets) HOST_PutText(stream->file, "(");
    if (shape.is_word || shape.has_inner) HOST_PutText(stream->file, "(");
}

static void close_shape(TLC_STREAM *stream, const SHAPE &shape)
{
    if (shape.is_word) HOST_PutText(stream->file, " ? 1 : 0)");
    if (shape.has_inner) HOST_PutText(stream->file, ")");
    if (shape.is_test) HOST_PutText(stream->file, "!=0");
    if (shape.has_brackets) HOST_PutText(stream->file, ")");
    if (shape.method != nullptr) HOST_PutText(stream->file, ")");
}

/* P-code orders the addresses of objects, which have none in Java. */
static bool orders_objects(const TLE_TERM *term)
{
    bool is_equality = term->kind == TLT_TOKEN_EQUAL || term->kind == TLT_TOKEN_NOT_EQUAL;
    if (!is_comparison(term) || is_equality || is_comparison_of_texts(term)) return false;
    return term->left != nullptr && term->left->type != nullptr &&
           TLCJ_Kind(term->left->type) == TLCJ_OBJECT;
}

static void open_operator(TLC_STREAM *stream, const TLE_TERM *term)
{
    if (orders_objects(term)) TLC_Error(stream, "Order of objects not possible in 'Java'");
    const char *method = is_comparison_of_texts(term) ? "toll_compare" : method_of(term);
    if (method != nullptr) std::fprintf(stream->file, "%s(", method);
}

static JAVA_PLACE operand_place(const TLE_TERM *outer, bool is_right)
{
    return { .outer = outer, .is_right = is_right, .is_condition = wants_truth(outer) };
}

/* A function beside an operator has the type of what it is compared with. */
static int32_t write_operand(TLC_STREAM *stream, const TLE_TERM *outer, TLE_TERM *term)
{
    bool is_right = term == outer->right;
    const TLE_TERM *other = is_right ? outer->left : outer->right;
    if (term != nullptr && term->kind == TLE_ADDRESS && other != nullptr) {
        return write_function(stream, other->type, term->identifier);
    }
    return write_at(stream, term, operand_place(outer, is_right));
}

static int32_t close_method(TLC_STREAM *stream, TLE_TERM *term)
{
    HOST_PutText(stream->file, ",");
    int32_t written = write_operand(stream, term, term->right);
    int32_t code = term->extra & TLO_CODE_MASK;
    bool is_compared = is_comparison_of_texts(term);
    bool is_scaled = !is_compared && (code == EEP_SMUL || code == EEP_SDIV);
    if (is_scaled) std::fprintf(stream->file, ",%d", TLO_Scale(term->extra));
    HOST_PutText(stream->file, ")");
    if (is_compared) std::fprintf(stream->file, "%s0", TLE_JavaOperatorText(term));
    return written;
}

static bool is_sum(const TLE_TERM *term)
{
    return term->kind == TLT_TOKEN_PLUS || term->kind == TLT_TOKEN_MINUS;
}

/* A product that begins with the sign before it: the two in a row would be one of Java's own. */
static bool repeats_sign(const TLE_TERM *outer)
{
    const TLE_TERM *term = outer->right;
    if (TLE_TextLevel(term) != TLE_LEVEL_PRODUCT) return false;
    while (TLE_TextLevel(term) == TLE_LEVEL_PRODUCT && term->left != nullptr)
        term = term->left;
    if (TLE_IsNegativeLiteral(term)) return outer->kind == TLT_TOKEN_MINUS;
    return term->left == nullptr && term->kind == outer->kind;
}

/* What stands behind the left operand. */
static int32_t close_operator(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term->right == nullptr) return 0;
    if (is_comparison_of_texts(term) || method_of(term) != nullptr) {
        return close_method(stream, term);
    }
    HOST_PutText(stream->file, TLE_JavaOperatorText(term));
    if (is_sum(term) && repeats_sign(term)) HOST_PutText(stream->file, " ");
    if (is_selection(term)) return write_reach(stream, term->right, REACH_ITEM);
    return write_operand(stream, term, term->right);
}

static JAVA_PLACE place_in_chain(const TLE_CHAIN &chain, int32_t at, const JAVA_PLACE &place)
{
    return at == 0 ? place : operand_place(chain.terms[at - 1], false);
}

/* The far end of the chain comes first; each operator then goes on behind its left operand. */
static int32_t write_chain(TLC_STREAM *stream, const TLE_CHAIN &chain, const JAVA_PLACE &place)
{
    int32_t last = chain.count - 1;
    for (int32_t i = 0; i <= last; ++i) {
        open_shape(stream, shape_of(stream, chain.terms[i], place_in_chain(chain, i, place)));
        open_operator(stream, chain.terms[i]);
    }
    TLE_TERM *end = chain.terms[last];
    int32_t written = end->left == nullptr ? 1 : write_operand(stream, end, end->left);
    for (int32_t i = last; i >= 0; --i) {
        written &= close_operator(stream, chain.terms[i]);
        close_shape(stream, shape_of(stream, chain.terms[i], place_in_chain(chain, i, place)));
    }
    return written;
}

static int32_t write_assignment(TLC_STREAM *stream, TLE_TERM *term);

static int32_t write_operand_term(TLC_STREAM *stream, TLE_TERM *term, const JAVA_PLACE &place)
{
    SHAPE shape = shape_of(stream, term, place);
    open_shape(stream, shape);
    int32_t written =
        term->kind == TLT_TOKEN_ASSIGN ? write_assignment(stream, term) : write_value(stream, term);
    close_shape(stream, shape);
    return written;
}

static int32_t write_at(TLC_STREAM *stream, TLE_TERM *term, const JAVA_PLACE &place)
{
    if (term == nullptr) return write_value(stream, nullptr);
    bool is_complete = term->kind != TLT_TOKEN_ASSIGN || (term->left && term->right);
    if (!is_complete) return 0;
    if (TLE_TermOperator(term) == nullptr || term->kind == TLT_TOKEN_ASSIGN) {
        return write_operand_term(stream, term, place);
    }
    TLE_CHAIN chain;
    TLE_OpenChain(&chain, term);
    /* An assignment at the far end is an operand: it is more than its sign between two texts. */
    if (chain.terms[chain.count - 1]->kind == TLT_TOKEN_ASSIGN) --chain.count;
    int32_t written = write_chain(stream, chain, place);
    TLE_CloseChain(&chain);
    return written;
}

int32_t TLE_JavaOperator(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    if (mode != TLE_MODE_VALUE) return is_selection(term) ? write_address(stream, term, mode) : 0;
    return write_at(stream, term, FREE_PLACE);
}

int32_t TLE_JavaCondition(TLC_STREAM *stream, TLE_TERM *term)
{
    JAVA_PLACE place = { .outer = nullptr, .is_right = false, .is_condition = true };
    return write_at(stream, term, place);
}

/* ---- Values of a type ---- */

static bool is_word(TLI_IDENTIFIER *type)
{
    return TLIT_TypeBaseType(nullptr, type) == TLIT_IntType || TLIT_IntegerType(type);
}

/* Is the Java text of a term a char or a short by itself? */
static bool is_narrow_text(TLE_TERM *term)
{
    TLE_TERM *last = last_field(term);
    TLI_IDENTIFIER *identifier = last->identifier;
    if (last->kind != TLT_TOKEN_IDENTIFIER || identifier == nullptr) return false;
    return !TLCJ_IsVector(identifier) && !TLCJ_IsReference(identifier);
}

/* A byte that may be more than its type has room for. */
static bool is_wide(const TLE_TERM *term)
{
    return term->kind == TLE_BUILT_IN || term->kind == TLT_TOKEN_ASSIGN || term->kind == TLE_CALL ||
           term->kind == TLE_INDIRECT_CALL;
}

/* Writes the low byte of a value, without brackets round it all. */
static int32_t write_low_byte(TLC_STREAM *stream, TLE_TERM *term)
{
    int32_t level =
        is_truth(term) ? static_cast<int32_t>(TLE_LEVEL_OPERAND) : own_level(stream, term);
    bool has_brackets = TLE_NeedsBrackets(TLE_LEVEL_BIT_AND, level, false);
    if (has_brackets) HOST_PutText(stream->file, "(");
    int32_t written = write_value(stream, term);
    HOST_PutText(stream->file, has_brackets ? ") & 255" : " & 255");
    return written;
}

static int32_t write_char(TLC_STREAM *stream, TLE_TERM *term)
{
    bool is_char = term->type == TLIT_CharType;
    if (is_char && is_narrow_text(term)) return write_value(stream, term);
    int32_t value = 0;
    if (TLE_Constant(term, &value)) {
        std::fprintf(stream->file, "(char) %d", value & 255);
        return 1;
    }
    HOST_PutText(stream->file, "(char) (");
    int32_t written = write_low_byte(stream, term);
    HOST_PutText(stream->file, ")");
    return written;
}

static int32_t write_short(TLC_STREAM *stream, TLE_TERM *term)
{
    bool is_short = term->type == TLIT_ShortType;
    if (is_short && is_narrow_text(term)) return write_value(stream, term);
    HOST_PutText(stream->file, "(short) (");
    int32_t written = write_value(stream, term);
    HOST_PutText(stream->file, ")");
    return written;
}

static int32_t write_byte(TLC_STREAM *stream, TLE_TERM *term)
{
    int32_t value = 0;
    bool is_literal = TLE_Constant(term, &value) != 0;
    if (is_literal && (value < 0 || value > 255)) {
        TLC_Literal(stream, value & 255);
        return 1;
    }
    return is_wide(term) ? write_low_byte(stream, term) : write_value(stream, term);
}

static int32_t write_converted(TLC_STREAM *stream, const char *method, TLE_TERM *term)
{
    std::fprintf(stream->file, "%s(", method);
    int32_t written = write_value(stream, term);
    HOST_PutText(stream->file, ")");
    return written;
}

/* WORD takes everything of four bytes; the run time knows which number it gave an object. */
static int32_t write_carried(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, TLE_TERM *term)
{
    bool is_object = TLCJ_Kind(wanted) == TLCJ_OBJECT;
    if (!is_object) return write_converted(stream, "toll_word_of_object", term);
    HOST_PutText(stream->file, "(");
    TLCJ_WriteType(stream, wanted);
    HOST_PutText(stream->file, ") ");
    return write_converted(stream, "toll_object_of_word", term);
}

int32_t TLE_JavaResult(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, TLE_TERM *term)
{
    if (term == nullptr || wanted == nullptr) return write_value(stream, term);
    if (term->kind == TLE_ADDRESS) return write_function(stream, wanted, term->identifier);
    if (term->type == nullptr) return write_value(stream, term);
    TLCJ_KIND kind = TLCJ_Kind(wanted);
    if (term->kind == TLT_TOKEN_NULL && kind == TLCJ_WORD) {
        HOST_PutText(stream->file, "0");
        return 1;
    }
    if (kind == TLCJ_FLOAT && is_word(term->type)) {
        return write_converted(stream, "toll_float_of_word", term);
    }
    if (kind != TLCJ_FLOAT && kind != TLCJ_OBJECT && term->type == TLIT_FloatType) {
        return write_converted(stream, "toll_word_of_float", term);
    }
    bool is_null = term->kind == TLT_TOKEN_NULL;
    bool is_object = TLCJ_Kind(term->type) == TLCJ_OBJECT;
    if (!is_null && (kind == TLCJ_OBJECT) != is_object) return write_carried(stream, wanted, term);
    return write_value(stream, term);
}

int32_t TLE_JavaValueAs(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, TLE_TERM *term)
{
    bool is_plain = term == nullptr || wanted == nullptr || term->type == nullptr ||
                    TLCJ_Kind(term->type) == TLCJ_FLOAT || TLCJ_Kind(term->type) == TLCJ_OBJECT;
    if (is_plain) return TLE_JavaResult(stream, wanted, term);
    if (wanted == TLIT_CharType) return write_char(stream, term);
    if (wanted == TLIT_ShortType) return write_short(stream, term);
    if (is_enumeration(wanted)) return write_byte(stream, term);
    return TLE_JavaResult(stream, wanted, term);
}

/* ---- Assignment ---- */

/* Items of one byte, of which a store keeps less than the value that it gives on. */
static bool is_narrow(TLI_IDENTIFIER *type)
{
    return type == TLIT_CharType || type == TLIT_ShortType || is_enumeration(type);
}

/* Does an item of a narrow type keep all of a value? */
static bool fits(TLI_IDENTIFIER *type, TLE_TERM *value)
{
    int32_t number = 0;
    if (TLE_Constant(value, &number)) return number >= 0 && number <= 255;
    if (is_enumeration(type)) return is_truth(value) || !is_wide(value);
    return value->type == type && is_narrow_text(value);
}

/* Is it a name with nothing to work out before it? */
static bool is_simple(const TLE_TERM *place)
{
    return place->kind == TLT_TOKEN_IDENTIFIER && place->left == nullptr;
}

bool TLE_IsOwnVariable(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    const TLCJ_STATE *state = TLCJ_State(stream);
    const TLI_SCOPE *frame = identifier == nullptr ? nullptr : frame_of(identifier);
    return frame != nullptr && frame == state->frame && !state->has_frame &&
           !TLCJ_IsReference(identifier) && !TLCJ_IsBoxed(stream, identifier);
}

/* Is it made of literals and of variables that no other function can change? */
static bool is_own_value(TLC_STREAM *stream, const TLE_TERM *term)
{
    for (; term != nullptr; term = term->left) {
        if (term->kind == TLT_TOKEN_NUMBER) return true;
        TLI_IDENTIFIER *identifier = term->identifier;
        if (term->kind == TLT_TOKEN_IDENTIFIER) {
            return term->left == nullptr && TLE_IsOwnVariable(stream, identifier);
        }
        bool is_sum = term->kind == TLT_TOKEN_PLUS || term->kind == TLT_TOKEN_MINUS;
        if (!is_sum || !is_own_value(stream, term->right)) return false;
    }
    return true;
}

static bool has_assignment(const TLE_TERM *term)
{
    for (; term != nullptr; term = term->left) {
        if (term->kind == TLT_TOKEN_ASSIGN) return true;
        if (term->right != nullptr && has_assignment(term->right)) return true;
    }
    return false;
}

/* Does a place stay the same whatever the value calls? */
static bool is_stable(TLC_STREAM *stream, const TLE_TERM *term)
{
    const TLE_TERM *place = term->left;
    if (place->kind != TLT_TOKEN_IDENTIFIER || place->identifier == nullptr) return false;
    return !TLCJ_IsVector(place->identifier) && is_own_value(stream, place->left) &&
           !has_assignment(term->right);
}

/* Java works out the place first, P-code the value; one method has them in P-code's order. */
static bool needs_method_to_store(TLC_STREAM *stream, TLE_TERM *term)
{
    TLE_TERM *place = term->left;
    if (term->extra == TLO_STORE_ARRAY || term->extra == TLO_STORE_ADDRESS) return false;
    bool is_used = term != stream->text.statement;
    bool is_narrow_place = place->type != nullptr && is_narrow(place->type);
    if (is_used && is_narrow_place && !fits(place->type, term->right)) return true;
    int32_t value = 0;
    if (is_simple(place) || TLE_Constant(term->right, &value)) return false;
    if (is_stable(stream, term)) return false;
    return TLE_HasEffects(term->right) || TLE_HasEffects(place);
}

/* Java takes a literal for a char or a short by itself where the item has room for it. */
static bool is_fitting_literal(TLI_IDENTIFIER *type, const TLE_TERM *value)
{
    int32_t number = 0;
    if (!TLE_Constant(value, &number)) return false;
    if (type == TLIT_CharType) return number >= 0 && number <= UINT8_MAX;
    return type == TLIT_ShortType && number >= INT16_MIN && number <= INT16_MAX;
}

int32_t TLE_JavaAssigned(TLC_STREAM *stream, TLI_IDENTIFIER *type, TLE_TERM *value)
{
    bool is_plain = is_fitting_literal(type, value) && value->type != TLIT_FloatType;
    return is_plain ? write_value(stream, value) : TLE_JavaValueAs(stream, type, value);
}

static int32_t write_source(TLC_STREAM *stream, TLE_TERM *term)
{
    switch (term->extra) {
    case TLO_STORE_TIME_AS_CLOCK:
        return write_converted(stream, "toll_clock_of_time", term->right);
    case TLO_STORE_CLOCK_AS_TIME:
        return write_converted(stream, "toll_time_of_clock", term->right);
    case TLO_STORE_ADDRESS:
        return TLE_TermCode(stream, term->right, TLE_MODE_ADDRESS);
    case TLO_STORE_ARRAY:
        return TLE_TermCode(stream, term->right, TLE_MODE_EXTENT);
    default:
        return TLE_JavaAssigned(stream, term->left->type, term->right);
    }
}

/* The value as it was before the store cut it. */
static int32_t write_uncut(TLC_STREAM *stream, TLE_TERM *term)
{
    bool is_plain = term->extra == TLO_STORE_VALUE && is_narrow(term->left->type);
    return is_plain ? TLE_JavaResult(stream, term->left->type, term->right)
                    : write_source(stream, term);
}

static int32_t write_stored_in_order(TLC_STREAM *stream, TLE_TERM *term)
{
    bool is_byte = is_enumeration(term->left->type);
    HOST_PutText(stream->file, is_byte ? "toll_store_byte(" : "toll_store(");
    int32_t written = write_uncut(stream, term);
    HOST_PutText(stream->file, ", ");
    written &= write_reference(stream, term->left);
    HOST_PutText(stream->file, ")");
    return written;
}

/* Writes the place and what opens the value; gives what closes it. */
static const char *open_store(TLC_STREAM *stream, TLE_TERM *place, int32_t *written)
{
    TLE_TERM *last = last_field(place);
    TLI_IDENTIFIER *identifier = last->identifier;
    *written = 0;
    if (identifier == nullptr) return "";
    TLCJ_NoteStore(stream, identifier);
    bool is_element = TLCJ_IsVector(identifier) && last->left != nullptr;
    if (!is_element && !TLCJ_IsReference(identifier)) {
        *written = write_reach(stream, place, REACH_ITEM);
        HOST_PutText(stream->file, "=");
        return "";
    }
    *written = write_reach(stream, place, REACH_NAME);
    HOST_PutText(stream->file, ".set(");
    if (is_element) {
        *written &= write_value(stream, last->left);
    } else {
        HOST_PutText(stream->file, "0");
    }
    HOST_PutText(stream->file, ", ");
    return ")";
}

static int32_t write_assignment(TLC_STREAM *stream, TLE_TERM *term)
{
    int32_t written = 0;
    if (term->left == nullptr || term->right == nullptr) return 0;
    if (needs_method_to_store(stream, term)) return write_stored_in_order(stream, term);
    const char *end = open_store(stream, term->left, &written);
    written &= write_source(stream, term);
    HOST_PutText(stream->file, end);
    return written;
}

void TLE_JavaStoreName(TLC_STREAM *stream, TLE_TERM *place, const char *name)
{
    int32_t written = 0;
    const char *end = open_store(stream, place, &written);
    TLCJ_KIND kind = TLCJ_Kind(place->type);
    const char *form = is_enumeration(place->type) ? "%s & 255" : "%s";
    if (kind == TLCJ_CHAR) form = "(char) (%s & 255)";
    if (kind == TLCJ_SHORT) form = "(short) (%s)";
    std::fprintf(stream->file, form, name);
    HOST_PutText(stream->file, end);
}

bool TLE_IsJavaVariable(const TLE_TERM *place)
{
    return is_simple(place) && place->identifier != nullptr &&
           !TLCJ_IsReference(place->identifier) && !TLCJ_IsVector(place->identifier);
}

/* ---- Calls ---- */

static bool is_text(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    return type == TLIT_StringType || TLIT_IsStringType(TLP_DataTypeDomain(stream->module), type);
}

static bool holds_characters(TLI_IDENTIFIER *type)
{
    return (TLIT_IsArrayType(type) ? TLIT_ArrayOf(type) : type) == TLIT_CharType;
}

static int32_t write_reference_argument(TLC_STREAM *stream, TLI_IDENTIFIER *formal, TLE_TERM *link)
{
    TLE_TERM *actual = link->left;
    if (TLCJ_IsVector(formal)) return TLE_TermCode(stream, actual, TLE_MODE_EXTENT);
    bool is_pointer = link->extra == TLE_PASS_POINTER;
    return TLE_TermCode(stream, actual, is_pointer ? TLE_MODE_VALUE : TLE_MODE_ADDRESS);
}

/* An array with no subscript of its own. */
static bool is_whole_array(const TLE_TERM *term)
{
    const TLE_TERM *last = last_field(const_cast<TLE_TERM *>(term));
    return last->kind == TLT_TOKEN_IDENTIFIER && last->identifier != nullptr &&
           last->left == nullptr && (TLI_IdentifierFlags(last->identifier) & TLI_DIMENSIONED) != 0;
}

/* An argument behind the declared ones: an object whose class tells what it is. */
static int32_t write_extra_argument(TLC_STREAM *stream, TLE_TERM *link)
{
    TLE_TERM *actual = link->left;
    if (actual->type != nullptr && (link->extra == TLE_PASS_ARRAY || is_whole_array(actual))) {
        return TLE_TermCode(stream, actual, TLE_MODE_EXTENT);
    }
    TLCJ_KIND kind = TLCJ_Kind(actual->type);
    bool is_narrow_item =
        kind == TLCJ_CHAR && actual->kind != TLT_TOKEN_NUMBER && is_narrow_text(actual);
    if (is_narrow_item) HOST_PutText(stream->file, "(int) ");
    if (actual->kind == TLT_TOKEN_NULL) HOST_PutText(stream->file, "(Object) ");
    return write_value(stream, actual);
}

static int32_t write_argument(TLC_STREAM *stream, TLI_IDENTIFIER *formal, TLE_TERM *link)
{
    TLE_TERM *actual = link->left;
    if (actual == nullptr) return write_value(stream, nullptr);
    if (formal == nullptr) return write_extra_argument(stream, link);
    if (TLIV_ArgumentPassType(formal) != TLIV_BY_VALUE) {
        return write_reference_argument(stream, formal, link);
    }
    TLI_IDENTIFIER *type = TLI_IdentifierType(formal);
    if (TLIT_IsArrayType(type)) return TLE_TermCode(stream, actual, TLE_MODE_EXTENT);
    bool is_characters = is_text(stream, type) && holds_characters(actual->type);
    if (!is_characters) return TLE_JavaValueAs(stream, type, actual);
    HOST_PutText(stream->file, "toll_text(");
    int32_t written = TLE_TermCode(stream, actual, TLE_MODE_EXTENT);
    HOST_PutText(stream->file, ")");
    return written;
}

int32_t TLE_JavaCall(TLC_STREAM *stream, TLE_TERM *term, int32_t direct)
{
    char name[TLCJ_NAME_CAPACITY];
    TLI_IDENTIFIER *function = term->identifier;
    if (function == nullptr) return 0;
    if (direct) {
        std::fprintf(stream->file, "%s(", TLCJ_Name(stream, function, name));
    } else {
        TLE_TERM whole = *term;
        whole.left = nullptr;
        write_identifier(stream, &whole);
        HOST_PutText(stream->file, ".call(");
    }
    int32_t done = 1;
    int32_t index = 0;
    for (TLE_TERM *link = term->left; link != nullptr; link = link->right, ++index) {
        done &= write_argument(stream, TLIV_GetFunctionArgument(function, index), link);
        if (link->right != nullptr) HOST_PutText(stream->file, ",");
    }
    HOST_PutText(stream->file, ")");
    return done;
}

/* ---- Operands ---- */

static int32_t write_operand_value(TLC_STREAM *stream, TLE_TERM *term)
{
    switch (term->kind) {
    case TLT_TOKEN_IDENTIFIER:
        return write_identifier(stream, term);
    case TLE_INDIRECT_CALL:
        return TLE_JavaCall(stream, term, 0);
    case TLE_CALL:
        return TLE_JavaCall(stream, term, 1);
    case TLE_BUILT_IN:
        return TLB_GenerateCode(stream, term);
    case TLT_TOKEN_NUMBER:
        return write_number(stream, term);
    case TLE_ADDRESS:
        return write_function(stream, term->type, term->identifier);
    case TLT_TOKEN_NULL:
    case TLT_TOKEN_STRING:
    case TLT_TOKEN_DATA_LITERAL:
        TLE_DataTerm(stream, term);
        return 1;
    default:
        return 0;
    }
}

int32_t TLE_JavaOperand(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    if (mode == TLE_MODE_VALUE) return write_operand_value(stream, term);
    return term->type == nullptr && term->identifier == nullptr ? 0
                                                                : write_address(stream, term, mode);
}

/* ---- Statements ---- */

/* Java takes only calls and assignments for statements. */
static bool is_statement(const TLE_TERM *term)
{
    switch (term->kind) {
    case TLT_TOKEN_ASSIGN:
    case TLE_CALL:
    case TLE_INDIRECT_CALL:
        return true;
    case TLE_BUILT_IN:
        return TLB_IsJavaCall(term);
    default:
        return false;
    }
}

int32_t TLE_JavaStatement(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term == nullptr || is_statement(term)) return write_value(stream, term);
    if (term->kind == TLE_ADDRESS) return 1; /* no type says which object it would be */
    HOST_PutText(stream->file, "toll_drop(");
    int32_t written = write_value(stream, term);
    HOST_PutText(stream->file, ")");
    return written;
}
