// What the files of the declaration parser share. A rule reads what is left of a statement behind its
// keyword, or a whole statement that follows without one.
#pragma once

#include "frontend/tlp.h"

#include <ostrum/tlt.h>

// How an array part says that there is none.
enum { TLP_SCALAR = -1 };

// Kinds of functions, by where and how they are declared.
enum {
    TLP_KIND_PRIVATE = 0,
    TLP_KIND_PUBLIC = 1,
    TLP_KIND_ENTRY = 2,
    TLP_KIND_TYPE = 3 // TYPEDEF: the function is the prototype of a type
};

// [ ], [ expression ] or nothing.
struct TLP_ARRAY_PART {
    int32_t dimension;     // TLP_SCALAR, 0 for [ ], else number of elements
    TLI_IDENTIFIER *range; // type of the subscript, null for a scalar
};

// Reads the name of a type. Null after an error.
TLI_IDENTIFIER *TLP_ParseType(TLP_MODULE *module, TLT_STATEMENT *statement);

// Reads an array part; after an error it is as good as could be read.
TLP_ARRAY_PART TLP_ParseArrayPart(TLP_MODULE *module, TLT_STATEMENT *statement);

// Reads the initialiser of a constant: a list of links, one for each element, which the caller owns.
// Dimension 0 becomes the number of values, an array type makes it TLP_SCALAR. Null after an error.
TLE_TERM *TLP_ParseInitialiser(TLP_MODULE *module, TLT_STATEMENT *statement, TLI_IDENTIFIER *type,
                               int32_t *dimension);

// Takes the scope of the open record, if there is one, off the module's domain.
void TLP_CloseRecord(TLP_MODULE *module);

// The function declared last and not yet closed, null for none.
TLI_IDENTIFIER *TLP_OpenFunction(const TLP_MODULE *module);

void TLP_ConstRule(TLP_MODULE *module, TLT_STATEMENT *statement);
void TLP_EnumRule(TLP_MODULE *module, TLT_STATEMENT *statement);
void TLP_VarRule(TLP_MODULE *module, TLT_STATEMENT *statement);
void TLP_NonVolatileRule(TLP_MODULE *module, TLT_STATEMENT *statement);
void TLP_RecordRule(TLP_MODULE *module, TLT_STATEMENT *statement);
void TLP_PointerRule(TLP_MODULE *module, TLT_STATEMENT *statement);
void TLP_PragmaRule(TLP_MODULE *module, TLT_STATEMENT *statement);
void TLP_AssertRule(TLP_MODULE *module, TLT_STATEMENT *statement);
void TLP_FunctionRule(TLP_MODULE *module, TLT_STATEMENT *statement);
