#include <ostrum.h>

int main(void)
{
    return printf("%s\n", TLP_Message(0)) < 0;
}
