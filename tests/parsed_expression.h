// Expressions parsed against a fixed set of declarations, and shown as one line of text.
#pragma once

#include "expr/tle.h"
#include "tests/parsed_source.h"

#include <gtest/gtest.h>
#include <ostrum.h>

class ExpressionSource
{
public:
    ExpressionSource() : ExpressionSource(declarations()) {}

    explicit ExpressionSource(const std::string &lines)
    {
        source.parse(lines);
        EXPECT_EQ(source.messages(), "");
        source.module->keyword = 0;
        text() = "";
        TLT_DefaultMessageHandler([](TLT_STATEMENT *, int32_t level, const char *message) {
            text() += "|" + std::to_string(level) + " " + message;
        });
    }

    ~ExpressionSource() { drop(); }

    ExpressionSource(const ExpressionSource &) = delete;
    ExpressionSource &operator=(const ExpressionSource &) = delete;

    // The tree of a text, which lives until the next one; messages() tells its messages.
    TLE_TERM *tree(const std::string &expression, int32_t use, int32_t stop = TLT_TOKEN_END_OF_LINE)
    {
        drop();
        text() = "";
        current = TLT_NewStatement(expression.c_str(), "m.tl", 1, 1);
        testing::internal::CaptureStdout();
        root = TLE_ParseExpression(source.module, current, use, stop);
        testing::internal::GetCapturedStdout();
        return root;
    }

    // The tree with its type and messages.
    std::string parse(const std::string &expression, int32_t use = TLE_USE_CONDITION,
                      int32_t stop = TLT_TOKEN_END_OF_LINE)
    {
        const TLE_TERM *term = tree(expression, use, stop);
        if (term == nullptr) return "null" + text();
        const bool is_bracket = term->kind == TLE_BRACKET;
        return show(term) + " " + (is_bracket ? "" : TLE_TypeText(term)) + text();
    }

    std::string messages() const { return text(); }
    TLT_STATEMENT *statement() const { return current; }
    TLP_MODULE *module() const { return source.module; }

private:
    ParsedSource source;
    TLT_STATEMENT *current = nullptr;
    TLE_TERM *root = nullptr;

    static std::string &text()
    {
        static std::string messages;
        return messages;
    }

    static const char *declarations()
    {
        return "ENUM COLOUR = RED GREEN BLUE\n"
               "TYPEDEF RECORD PAIR(INT LEFT, INT LIST[4])\n"
               "TYPEDEF -> PAIR PAIR_AT\n"
               "TYPEDEF RECORD PAIR(PAIR_AT NEXT)\n"
               "TYPEDEF RECORD OUTER(PAIR IN)\n"
               "TYPEDEF FUNCTION INT HANDLER(INT X)\n"
               "CONST INT FIVE = 5, TABLE[3] = 7, 8, 9\n"
               "CONST COLOUR HUE = BLUE\n"
               "CONST STRING HELLO = \"hello\"\n"
               "FUNCTION INT F()\n"
               "FUNCTION INT ONE(INT X)\n"
               "FUNCTION INT TWO(INT X, INT Y)\n"
               "FUNCTION VOID BY_VAR(VAR INT X)\n"
               "FUNCTION VOID BY_VARS(VAR INT X[])\n"
               "FUNCTION VOID BY_HUE(VAR INT X[COLOUR])\n"
               "FUNCTION VOID BY_CONST(CONST STRING X)\n"
               "FUNCTION VOID BY_RECORD(VAR PAIR X)\n"
               "FUNCTION VOID TAKE_AT(PAIR_AT X)\n"
               "FUNCTION VOID TEXT(STRING X)\n"
               "SYSCALL (9) VOID SHOW(STRING X ..)\n"
               "PRIVATE\n"
               "VAR INT A, B, C, M10[10], OPEN[], HUES[COLOUR]\n"
               "VAR BOOL Q\n"
               "VAR COLOUR K\n"
               "VAR PAIR R, RR[4]\n"
               "VAR PAIR_AT P\n"
               "VAR OUTER O\n"
               "VAR HANDLER H\n"
               "VAR CHAR LETTER, LETTERS[10]\n"
               "VAR SHORT SMALL\n"
               "VAR STRING S\n"
               "VAR WORD W\n"
               "VAR FLOAT FL\n"
               "VAR QUANTITY ANY\n"
               "VAR MESSAGE TOLD\n"
               "VAR CONNECTOR PLUG\n"
               "VAR VOLTAGE U\n"
               "VAR CURRENT I\n"
               "VAR RESISTANCE Z\n"
               "VAR TIME T\n"
               "VAR CLOCK_TIME CT\n"
               "VAR FREQUENCY FQ\n";
    }

    void drop()
    {
        TLE_DelExpression(root);
        root = nullptr;
        if (current != nullptr) TLT_DelStatement(current);
        current = nullptr;
    }

    static std::string show_arguments(const TLE_TERM *link)
    {
        std::string shown = "(";
        for (; link != nullptr; link = link->right) {
            if (link->extra != 0) shown += std::to_string(link->extra) + ":";
            shown += show(link->left) + (link->right == nullptr ? "" : ",");
        }
        return shown + ")";
    }

    static std::string show_name(const TLE_TERM *term)
    {
        const std::string name = TLE_TermValue(term);
        switch (term->kind) {
        case TLT_TOKEN_NUMBER:
            return std::to_string(term->value);
        case TLT_TOKEN_STRING:
            return "\"" + name + "\"";
        case TLT_TOKEN_DATA_LITERAL:
            return "{" + name + "}";
        case TLT_TOKEN_IDENTIFIER:
            return name;
        default:
            return term->kind < 0 || name.empty() ? TLE_KindText(term->kind) + name : name;
        }
    }

    static std::string show(const TLE_TERM *term)
    {
        if (term == nullptr) return "null";
        if (term->kind == TLE_BRACKET) return "BRACKET";
        if (term->kind == TLE_CALL || term->kind == TLE_INDIRECT_CALL || term->kind == TLE_BUILT_IN)
            return show_name(term) + show_arguments(term->left);
        std::string shown = show_name(term);
        const bool is_operator = TLE_TermOperator(term) != nullptr && term->type != nullptr;
        if (is_operator && term->right != nullptr) {
            const std::string left = term->left == nullptr ? "" : " " + show(term->left);
            return "(" + shown + left + " " + show(term->right) + ")";
        }
        if (term->left != nullptr) shown += "[" + show(term->left) + "]";
        if (term->right != nullptr) shown += " .. " + show(term->right);
        return shown;
    }
};

struct ExpressionRow {
    const char *text;
    const char *expected; // tree, type and messages
};

template <size_t count>
void expect_expressions(const ExpressionRow (&rows)[count], int32_t use = TLE_USE_CONDITION)
{
    ExpressionSource source;
    for (const ExpressionRow &row : rows)
        EXPECT_EQ(source.parse(row.text, use), row.expected) << row.text;
}
