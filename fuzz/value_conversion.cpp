// Fuzz target: display and rounding of counts, and the conversion of text to numbers.

#include <cstdlib>
#include <cstring>
#include <string>

#include <ostrum.h>

namespace
{

/** The next 32-bit word of the input; 0 when it is used up. */
uint32_t take_word(const uint8_t **data, size_t *size)
{
    uint32_t word = 0;
    const size_t count = *size < sizeof word ? *size : sizeof word;
    memcpy(&word, *data, count);
    *data += count;
    *size -= count;
    return word;
}

void convert_text(const std::string &text)
{
    int32_t number = 0;
    double real = 0;
    for (int32_t format = 0; format <= 3; format++) {
        const char *end = ST_CharInt(text.c_str(), &number, format);
        if (end != nullptr && (end < text.c_str() || end > text.c_str() + text.size())) abort();
        char digits[16];
        if (format < 3 && ST_IntChar(digits, number, format) == nullptr) abort();
    }
    ST_CharFloat(text.c_str(), &real);
    int32_t quantity = 0;
    float scale = 0;
    TLT_TestForUnits(text.c_str(), &quantity, &scale);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    TLT_Initialise();
    EUC_Initialise();
    const uint32_t word = take_word(&data, &size);
    const auto value = static_cast<int32_t>(take_word(&data, &size));
    const auto quantity = static_cast<int32_t>(word & 0xff) % (EUC_GetMaxType() + 1);
    const int32_t type = quantity | static_cast<int32_t>(word & 0x700);
    if (strlen(EUC_DisplayValue(type, value)) > 31) abort();
    if (strlen(EUC_UserString(type, static_cast<int32_t>(word >> 24 & 15), value)) > 31) abort();

    const std::string text(reinterpret_cast<const char *>(data), size);
    EUC_SetString(static_cast<int32_t>(word >> 16 & 7), text.c_str());
    convert_text(text);
    return 0;
}
