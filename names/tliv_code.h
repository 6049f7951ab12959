// Code operations of the names that own storage, for the class records.
#pragma once

#include "names/tliv.h"

int32_t TLIV_PushVariableValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript);
int32_t TLIV_PushVariableAddress(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript);
int32_t TLIV_PushArgumentValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript);
int32_t TLIV_PushArgumentAddress(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript);
int32_t TLIV_PushFieldValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript);
int32_t TLIV_PushFieldAddress(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript);
int32_t TLIV_PushStorageDimension(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);
