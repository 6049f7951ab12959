#include <cstring>
#include <ostrum.h>

// Prints a voltage through the installed library: the C++ side of the same interface.
int main()
{
    TLCG_Initialise();
    const bool is_keyword = TLT_IsToken("FUNCTION") == 1;
    const bool has_types = std::strcmp(TLI_IdentifierName(TLIT_Voltage), "VOLTAGE") == 0;
    TLP_CleanUp();
    return is_keyword && has_types ? 0 : 1;
}
