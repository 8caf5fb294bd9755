/* A host that calls what does not initialise the library, and so opens no socket. */
#include <k740/k740.h>

enum { kVirtualController = 900, kRunning = 1, kUnknownDevice = -1 };

int main(void) {
    K740_PACING pacing = {0};
    K740_SleepStart(&pacing);
    if (K740_SleepEnd(1, &pacing) < 1) { return 1; }
    return K740_SetTrainStatus(kVirtualController, kRunning) == kUnknownDevice ? 0 : 1;
}
