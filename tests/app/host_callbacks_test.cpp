// How the host's callbacks for audio and messages are called and logged.
#include "app/host_callbacks.h"
#include "tests/log/log_fixture.h"
#include "tests/support/allocation_failure.h"

#include <array>
#include <atomic>
#include <stdexcept>
#include <thread>

namespace k740::test {
namespace {

struct Call {
    std::array<int, 3> numbers;
    const unsigned char* audio;
    int length;
};
Call g_last{};
std::atomic<int> g_calls{0};

void Note(const Call& call) {
    g_last = call;
    ++g_calls;
}
int OnMessage(int first, int second, int third) {
    Note({{first, second, third}, nullptr, 0});
    return -1;
}
int OnAudio(int first, int second, unsigned char* audio, int length) {
    Note({{first, second, 0}, audio, length});
    return -1;
}
int OnIntercomAudio(int station, unsigned char* audio, int length) {
    Note({{station, 0, 0}, audio, length});
    return -1;
}
int CountOnly(int, int, int) {
    ++g_calls;
    return 0;
}
std::atomic<bool> g_memoryIsShort{false};
int LeaveNoMemory(int, int, int) {
    g_memoryIsShort = true;
    return 0;
}
int Throw(int, int, int) {
    throw std::runtime_error("of the host");
}

class HostCallbacksTest : public LogFixture {
protected:
    HostCallbacksTest() {
        g_calls = 0;
        m_callbacks.EnableLog(true);
    }
    /// @return the lines in the log of a callback type
    std::vector<std::string> Logged(const std::string& type) {
        m_log.SaveCallbackLog();
        return LogTexts(type);
    }
    void ExpectMessage(const std::string& type, int first, int second, int third, const std::string& line) {
        EXPECT_EQ(1, g_calls);
        EXPECT_EQ((std::array<int, 3>{first, second, third}), g_last.numbers);
        EXPECT_EQ(std::vector<std::string>{line}, Logged(type));
    }
    void ExpectAudio(const std::string& type, int first, int second, const std::string& line) {
        EXPECT_EQ(1, g_calls);
        EXPECT_EQ((std::array<int, 3>{first, second, 0}), g_last.numbers);
        EXPECT_EQ(static_cast<const void*>(m_samples.data()), g_last.audio);
        EXPECT_EQ(1764, g_last.length);
        EXPECT_EQ(std::vector<std::string>{line}, Logged(type));
    }

    CHostCallbacks m_callbacks{m_log};
    std::array<short, 882> m_samples{1, -1, 300, -32768, 32767, 0, 7, 8, 9};
    const HostAudio m_audio{m_samples.data(), 1764};
};

TEST_F(HostCallbacksTest, MonitoredZone) {
    m_callbacks.monitorZone.Set(OnAudio);
    m_callbacks.MonitorZone(33, 8, m_audio);
    ExpectAudio("PMONITORZONE", 33, 8, "PMONITORZONE(33, 8, {1,4294967295,300,4294934528,32767,0,7,8 ...}, 1764)");
}

TEST_F(HostCallbacksTest, PushToTalk) {
    m_callbacks.rpkPTTAudio.Set(OnAudio);
    m_callbacks.RPKPTTAudio(5000, 3, m_audio);
    ExpectAudio("PRPKPTTAUDIO", 5000, 3, "PRPKPTTAUDIO(5000, 3, {1,4294967295,300,4294934528,32767,0,7,8 ...}, 1764)");
}

TEST_F(HostCallbacksTest, AudioOfAVirtualController) {
    m_callbacks.trainAudio.Set(OnAudio);
    m_callbacks.TrainAudio(9501, 1001, m_audio);
    ExpectAudio("PTRAINAUDIO", 9501, 1001,
                "PTRAINAUDIO(9501, 1001, {1,4294967295,300,4294934528,32767,0,7,8 ...}, 1764)");
}

TEST_F(HostCallbacksTest, AudioOfAnIntercomCall) {
    m_callbacks.intercomAudio.Set(OnIntercomAudio);
    m_callbacks.IntercomAudio(5000, m_audio);
    ExpectAudio("PINTERCOMAUDIO", 5000, 0, "PINTERCOMAUDIO(5000, {1,4294967295,300,4294934528,32767,0,7,8 ...}, 1764)");
}

TEST_F(HostCallbacksTest, MessageOfAVirtualController) {
    m_callbacks.trainMessage.Set(OnMessage);
    m_callbacks.TrainMessage(9501, 60, 2);
    ExpectMessage("PTRAINMESSAGE", 9501, 60, 2, "PTRAINMESSAGE(9501, 60, 2)");
}

TEST_F(HostCallbacksTest, MessageOfAnIntercomCall) {
    m_callbacks.intercomMessage.Set(OnMessage);
    m_callbacks.IntercomMessage(5000, 5500, 1);
    ExpectMessage("PINTERCOMMESSAGE", 5000, 5500, 1, "PINTERCOMMESSAGE(5000, 5500, 1)");
}

TEST_F(HostCallbacksTest, NegativeNumbersAreLoggedUnsigned) {
    m_callbacks.intercomMessage.Set(OnMessage);
    m_callbacks.IntercomMessage(-1, -2, -3);
    ExpectMessage("PINTERCOMMESSAGE", -1, -2, -3, "PINTERCOMMESSAGE(4294967295, 4294967294, 4294967293)");
}

TEST_F(HostCallbacksTest, WhatIsNotSetIsNeitherCalledNorLogged) {
    m_callbacks.MonitorZone(33, 8, m_audio);
    m_callbacks.RPKPTTAudio(5000, 3, m_audio);
    m_callbacks.TrainAudio(9501, 1001, m_audio);
    m_callbacks.IntercomAudio(5000, m_audio);
    m_callbacks.TrainMessage(9501, 60, 2);
    m_callbacks.IntercomMessage(5000, 5500, 1);
    m_log.SaveCallbackLog();
    EXPECT_EQ(0, CountFiles());
}

TEST_F(HostCallbacksTest, ClearSwitchesThemAndTheLogOff) {
    m_callbacks.monitorZone.Set(OnAudio);
    m_callbacks.intercomMessage.Set(OnMessage);
    m_callbacks.Clear();
    EXPECT_FALSE(m_callbacks.IsLogEnabled());
    m_callbacks.MonitorZone(33, 8, m_audio);
    m_callbacks.IntercomMessage(5000, 5500, 1);
    EXPECT_EQ(0, g_calls);
}

TEST_F(HostCallbacksTest, WithTheLogOffTheyAreOnlyCalled) {
    m_callbacks.EnableLog(false);
    m_callbacks.intercomMessage.Set(OnMessage);
    m_callbacks.IntercomMessage(5000, 5500, 1);
    EXPECT_EQ(1, g_calls);
    m_log.SaveCallbackLog();
    EXPECT_EQ(0, CountFiles());
}

TEST_F(HostCallbacksTest, WhatTheHostThrowsEndsThere) {
    m_callbacks.intercomMessage.Set(Throw);
    EXPECT_NO_THROW(m_callbacks.IntercomMessage(5000, 5500, 1));
    EXPECT_EQ(std::vector<std::string>{"PINTERCOMMESSAGE(5000, 5500, 1)"}, Logged("PINTERCOMMESSAGE"));
}

TEST_F(HostCallbacksTest, ALogLineThatThereIsNoMemoryForIsDropped) {
    m_callbacks.intercomMessage.Set(LeaveNoMemory);
    {
        const AllocationFailure failure([] { return g_memoryIsShort.load(); });
        EXPECT_NO_THROW(m_callbacks.IntercomMessage(5000, 5500, 1));
    }
    EXPECT_TRUE(g_memoryIsShort);
    EXPECT_EQ(std::vector<std::string>{}, Logged("PINTERCOMMESSAGE"));
}

TEST_F(HostCallbacksTest, CallbackMayBeSwitchedOffWhileItIsCalled) {
    m_callbacks.EnableLog(false);
    std::atomic<bool> stop{false};
    std::thread setter([&] {
        while (!stop) {
            m_callbacks.intercomMessage.Set(CountOnly);
            m_callbacks.intercomMessage.Set(nullptr);
        }
    });
    for (int i = 0; i < 10'000; ++i) { m_callbacks.IntercomMessage(5000, 5500, 1); }
    stop = true;
    setter.join();
    EXPECT_LE(g_calls, 10'000);
}

} // namespace
} // namespace k740::test
