// A host that calls what does not initialise the library, and so opens no socket.
#include <k740/k740.h>

namespace {
constexpr int kVirtualController = 900;
constexpr int kRunning = 1;
constexpr int kUnknownDevice = -1;
} // namespace

int main() {
    K740_PACING pacing{};
    K740_SleepStart(&pacing);
    if (K740_SleepEnd(1, &pacing) < 1) { return 1; }
    return K740_SetTrainStatus(kVirtualController, kRunning) == kUnknownDevice ? 0 : 1;
}
