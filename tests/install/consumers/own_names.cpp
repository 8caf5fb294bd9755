// A host whose functions and classes have names that the library uses inside as well, with other meanings, and whose
// callback throws. It initialises the library, so it belongs on a private network.
#include <k740/k740.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

// Were the library to call one of these, the process would end.
struct adpcm_state;
void adpcm_coder(const short* /*pcm*/, char* /*code*/, int /*count*/, adpcm_state* /*state*/, int /*variant*/) {
    std::abort();
}
inline unsigned char linear2ulaw(short /*sample*/) {
    std::abort();
}
class CLog {
public:
    void PushLog(const std::string& type, uint8_t level, const std::string& text);
};
void CLog::PushLog(const std::string& /*type*/, uint8_t /*level*/, const std::string& /*text*/) {
    std::abort();
}

// Used, and so kept in the program.
[[gnu::used]] const auto g_ulaw = &linear2ulaw;

int g_calls = 0;

int Throw(int /*taskID*/, int /*status*/) {
    ++g_calls;
    throw std::runtime_error("of the host");
}

int main() {
    K740_SetDeviceCallback(nullptr, nullptr, nullptr, Throw, nullptr, nullptr, nullptr);
    const int stopped = K740_StopTask(7); // calls back with state 0
    return stopped == 0 && g_calls == 1 && K740_Deinitialize() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
