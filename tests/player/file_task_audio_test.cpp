// What the zones hear of audio files, and at which pace.
#include "tests/player/file_task_fixture.h"

#include <atomic>
#include <thread>

namespace k740::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int kPasses = 7; // makes two chunks fill frames: 7 x 1764 bytes are 3 of them, 14 x 1764 are 6

using FileTaskAudioTest = FileTaskTest;

TEST_F(FileTaskAudioTest, AnEmptyFileSendsNothing) {
    ExpectPlayed(0, kPasses);
}

TEST_F(FileTaskAudioTest, AFileOfTheSkippedBytesSendsNothing) {
    ExpectPlayed(kHeaderBytes, kPasses);
}

TEST_F(FileTaskAudioTest, AFileOfOneByteMoreSendsAChunkOfOneByteAndZeros) {
    ExpectPlayed(kHeaderBytes + 1, kPasses);
}

TEST_F(FileTaskAudioTest, AFileOfOneChunkSendsOne) {
    ExpectPlayed(kHeaderBytes + kChunkBytes, kPasses);
}

TEST_F(FileTaskAudioTest, AFileOfAByteMoreThanAChunkSendsASecondOneFilledUpWithZeros) {
    ExpectPlayed(kHeaderBytes + kChunkBytes + 1, kPasses);
}

TEST_F(FileTaskAudioTest, TheFilesOfAListFollowEachOtherWithoutAGap) {
    sim::Bytes all = Pushed(WriteNoise("1.pcm", 5000, 1));
    const sim::Bytes second = Pushed(WriteNoise("2.pcm", 9000, 2));
    all.insert(all.end(), second.begin(), second.end());
    const sim::Bytes pass = all;
    all.insert(all.end(), pass.begin(), pass.end());
    EXPECT_EQ(0, PlayFiles({.files = "1.pcm|none.pcm|2.pcm", .repeat = 2}));
    EXPECT_EQ(DatagramsOf(all), AllDatagrams());
}

TEST_F(FileTaskAudioTest, FilesArePlayedInRealTime) {
    constexpr int kChunks = 50; // one second
    WriteNoise("file.pcm", kHeaderBytes + kChunks * kChunkBytes);
    const auto begin = Clock::now();
    EXPECT_EQ(0, PlayFiles({.files = "file.pcm"}));
    const auto duration = Clock::now() - begin;
    EXPECT_GE(duration, 995ms); // each period may be up to 5 ms short of what the one before was too long
    EXPECT_LT(duration, 3000ms);
    const auto heard = m_controller.Recordings().at(0);
    EXPECT_EQ(kChunks * kChunkBytes / 4096, heard.datagrams);
    EXPECT_EQ(0U, heard.gaps);
}

TEST_F(FileTaskAudioTest, AListWithNothingToPlayDoesNotSpin) {
    WriteNoise("short.pcm", kHeaderBytes);
    constexpr int kEmptyPasses = 20;
    const auto begin = Clock::now();
    EXPECT_EQ(0, PlayFiles({.files = "none.pcm|short.pcm", .repeat = kEmptyPasses}));
    EXPECT_GE(Clock::now() - begin, kEmptyPasses * 20ms);
    EXPECT_TRUE(WaitForExactLine("*****Failed to open none.pcm", kEmptyPasses));
    EXPECT_TRUE(WaitForExactLine("Start to play file short.pcm, repeat 20/20, ..."));
    EXPECT_EQ(kEmptyPasses, CountLogLines("Start to play file short.pcm"));
    EXPECT_TRUE(AllDatagrams().empty());
}

// Each pass after the stop pushes for 200 ms into a task that refuses it.
TEST_F(FileTaskAudioTest, AStopEndsTheFileAtItsNextLookButNotThePasses) {
    WriteNoise("file.pcm", kHeaderBytes + 500 * kChunkBytes); // ten seconds
    std::atomic<Clock::time_point> stopped{};
    std::thread other([&] {
        EXPECT_TRUE(m_controller.WaitForDatagrams(2, kSoon));
        EXPECT_EQ(0, K740_StopTask(kTask));
        stopped = Clock::now();
    });
    EXPECT_EQ(0, PlayFiles({.files = "file.pcm", .repeat = 3}));
    const auto duration = Clock::now() - stopped.load();
    other.join();
    EXPECT_GE(duration, 400ms); // two more passes
    EXPECT_LT(duration, 1800ms);
    EXPECT_TRUE(WaitForExactLine("Start to play file file.pcm, repeat 3/3, ..."));
    EXPECT_EQ(3, CountLogLines("Start to play"));
    EXPECT_TRUE(WaitForExactLine("K740_StopTask(1001)", 2));
}

// Like a stop, the shutdown ends the task but not the passes.
TEST_F(FileTaskAudioTest, TheShutdownEndsTheFileAtItsNextLookButNotThePasses) {
    WriteNoise("file.pcm", kHeaderBytes + 500 * kChunkBytes); // ten seconds
    int result = -1;
    std::thread host([&] { result = PlayFiles({.files = "file.pcm", .repeat = 4}); });
    EXPECT_TRUE(WaitForExactLine("Start to play file file.pcm, repeat 1/4, ..."));
    const auto begin = Clock::now();
    EXPECT_EQ(0, K740_Deinitialize());
    host.join();
    EXPECT_EQ(0, result);
    EXPECT_GE(Clock::now() - begin, 600ms); // three whole looks of 200 ms
    EXPECT_LT(Clock::now() - begin, 5s);
}

TEST_F(FileTaskAudioTest, TwoTasksPlayAtATime) {
    sim::ZoneController& second = AddRegistered(34);
    second.SetKeep(sim::Keep::SamplesAndDatagrams);
    const auto first = DatagramsOf(Pushed(WriteNoise("1.pcm", 20'000, 1)));
    const auto other = DatagramsOf(Pushed(WriteNoise("2.pcm", 20'000, 2)));
    std::thread host([] { EXPECT_EQ(0, PlayFiles({.taskID = 2, .zones = "0022FF", .files = "2.pcm"})); });
    EXPECT_EQ(0, PlayFiles({.files = "1.pcm"}));
    host.join();
    EXPECT_EQ(first, AllDatagrams());
    WaitForPacket(34, sim::command::kCloseAudio);
    const auto heard = second.Recordings().at(0).rawDatagrams;
    ASSERT_LE(other.size(), heard.size());
    EXPECT_TRUE(std::equal(other.begin(), other.end(), heard.begin()));
}

} // namespace
} // namespace k740::test
