/* A host that uses what needs no initialised library. */
#include <k740/k740.h>

int main(void) {
    K740_PACING pacing = {0};
    K740_SleepStart(&pacing);
    return K740_SleepEnd(1, &pacing) >= 1 ? 0 : 1;
}
