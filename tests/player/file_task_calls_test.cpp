// What K740_StartAudioFileTask returns and logs.
#include "tests/player/file_task_fixture.h"

#include <atomic>
#include <thread>

namespace k740::test {
namespace {

using namespace std::chrono_literals;

class FileTaskCallsTest : public FileTaskTest {
protected:
    static constexpr const char* kRepeatError = "*****Repeat is error.";
    static constexpr const char* kNoFiles = "*****No audio files.";
};

TEST_F(FileTaskCallsTest, TheCallIsLoggedWithAllItsArgumentsFirst) {
    EXPECT_EQ(-1, PlayFiles({.taskID = -5,
                             .volume = 1,
                             .priority = 2,
                             .recovery = 3,
                             .zones = "zz",
                             .dryContact = 4,
                             .files = " a|b ",
                             .repeat = -1}));
    ASSERT_TRUE(WaitForExactLine(kRepeatError));
    const auto texts = LogTexts();
    const auto call =
        std::find(texts.begin(), texts.end(), "=====K740_StartAudioFileTask(-5, 1, 2, 3, 'zz', 4, ' a|b ', -1)");
    ASSERT_NE(texts.end(), call);
    EXPECT_EQ(kRepeatError, *(call + 1));
}

TEST_F(FileTaskCallsTest, NullTextsAreEmptyOnes) {
    EXPECT_EQ(-1, PlayFiles({.zones = nullptr, .files = nullptr}));
    EXPECT_TRUE(WaitForExactLine("=====K740_StartAudioFileTask(1001, 100, 70, 0, '', 0, '', 1)"));
    EXPECT_TRUE(WaitForExactLine(kNoFiles));
}

TEST_F(FileTaskCallsTest, RepeatsAreZeroTo65535) {
    for (int repeat : {-1, 65536, -2147483647, 2147483647}) {
        EXPECT_EQ(-1, PlayFiles({.files = "file.pcm", .repeat = repeat})) << repeat;
    }
    EXPECT_TRUE(WaitForExactLine(kRepeatError, 4));
    // Accepted as such; it is the task that is refused, by its ID.
    EXPECT_EQ(-1, PlayFiles({.taskID = 0, .files = "file.pcm", .repeat = 65535}));
    EXPECT_EQ(-1, PlayFiles({.taskID = 0, .files = "file.pcm", .repeat = 0}));
    EXPECT_TRUE(WaitForExactLine("=====K740_StartAudioStreamTask(0, 100, 70, 0, '0021FF', 0)", 2));
    EXPECT_EQ(4, CountExactLines(kRepeatError));
    EXPECT_EQ(6, CountLogLines("=====K740_StartAudioFileTask"));
}

TEST_F(FileTaskCallsTest, AnEmptyListIsMinusOneAndStartsNothing) {
    EXPECT_EQ(-1, PlayFiles({.files = ""}));
    EXPECT_TRUE(WaitForExactLine(kNoFiles));
    EXPECT_EQ(0, CountLogLines("StartAudioStreamTask"));
    EXPECT_TRUE(Reports().Of(kTask).empty());
}

TEST_F(FileTaskCallsTest, TheRepeatsAreLookedAtBeforeTheFiles) {
    EXPECT_EQ(-1, PlayFiles({.files = "", .repeat = -1}));
    EXPECT_TRUE(WaitForExactLine(kRepeatError));
    EXPECT_EQ(0, CountExactLines(kNoFiles));
}

TEST_F(FileTaskCallsTest, ARefusedTaskIsWhatTheStreamTaskSays) {
    WriteNoise("file.pcm", 5000);
    EXPECT_EQ(-1, PlayFiles({.priority = 1, .files = "file.pcm"}));
    EXPECT_EQ(-1, PlayFiles({.zones = "002100", .files = "file.pcm"}));
    StartAndBroadcast();
    EXPECT_EQ(-2, PlayFiles({.files = "file.pcm"})) << "runs already";
    EXPECT_EQ(2, K740_GetTaskStatus(kTask)) << "and goes on";
    EXPECT_EQ(0, CountLogLines("Start to play"));
}

TEST_F(FileTaskCallsTest, BesideTwoHundredTasksItIsMinusThree) {
    Reply(sim::PlayReply::Silent);
    for (int task = 1; task <= 200; ++task) { EXPECT_EQ(0, Start({.taskID = task})) << task; }
    EXPECT_EQ(-3, PlayFiles({.files = "file.pcm"}));
    EXPECT_EQ(std::vector<int>{-1}, Reports().Of(kTask));
}

TEST_F(FileTaskCallsTest, ATaskThatFailsIsMinusFour) {
    WriteNoise("file.pcm", 5000);
    Reply(sim::PlayReply::Refuse);
    EXPECT_EQ(-4, PlayFiles({.files = "file.pcm"}));
    EXPECT_TRUE(WaitForExactLine("*****Failed to start task 1001"));
    EXPECT_EQ(0, CountLogLines("Start to play"));
    EXPECT_EQ((std::vector<int>{1, -3}), Reports().Of(kTask));
}

TEST_F(FileTaskCallsTest, ATaskThatIsStoppedBeforeItBroadcastsIsMinusFour) {
    WriteNoise("file.pcm", 5000);
    sim::PlayBehaviour slow;
    slow.answerDelay = 400ms;
    m_controller.SetBehaviour(slow);
    Reports().OnNext(kTask, 1, [] { std::thread([] { K740_StopTask(kTask); }).detach(); });
    EXPECT_EQ(-4, PlayFiles({.files = "file.pcm"}));
    EXPECT_TRUE(WaitForExactLine("*****Failed to start task 1001"));
}

TEST_F(FileTaskCallsTest, WithinTheReportsOfItsOwnFormerRunItIsMinusFour) {
    WriteNoise("file.pcm", 5000);
    for (const int state : {1, 2}) {
        std::atomic<int> result{0};
        Reports().OnNext(kTask, state, [&] {
            K740_StopTask(kTask);
            result = PlayFiles({.files = "file.pcm"});
        });
        std::thread([] { Start(); }).detach();
        EXPECT_TRUE(WaitUntil([&] { return result != 0; })) << state;
        EXPECT_EQ(-4, result) << state;
        EXPECT_TRUE(WaitUntil([] { return !g_app->Player().Status().HasThreads(); })) << state;
    }
    EXPECT_EQ((std::vector<int>{1, 0, 1, 2, 0}), Reports().Of(kTask));
    EXPECT_TRUE(WaitForExactLine("*****Failed to start task 1001", 2));
}

TEST_F(FileTaskCallsTest, WithinTheReportOfAnotherTaskItPlays) {
    WriteNoise("file.pcm", kHeaderBytes + kChunkBytes);
    std::atomic<int> result{-9};
    Reports().OnNext(kTask, 2, [&] { result = PlayFiles({.taskID = 2002, .files = "file.pcm"}); });
    ASSERT_EQ(0, Start());
    EXPECT_TRUE(WaitUntil([&] { return result == 0; }));
}

TEST_F(FileTaskCallsTest, WithinTheReportOfItsFormerEndItPlays) {
    WriteNoise("file.pcm", kHeaderBytes + kChunkBytes);
    std::atomic<int> result{-9};
    Reports().OnNext(kTask, 0, [&] { result = PlayFiles({.files = "file.pcm"}); });
    StartAndBroadcast();
    ASSERT_EQ(0, K740_StopTask(kTask));
    EXPECT_TRUE(WaitUntil([&] { return result == 0; }));
}

TEST_F(FileTaskCallsTest, AShutdownBeforeItBroadcastsIsMinusFour) {
    Reply(sim::PlayReply::Silent);
    std::atomic<int> result{0};
    std::thread host([&] { result = PlayFiles({.files = "file.pcm"}); });
    WaitForPacket(kController, sim::command::kPlay);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(0, K740_Deinitialize());
    host.join();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s); // not when its controller is given up, after 4 s
    EXPECT_EQ(-4, result);
}

TEST_F(FileTaskCallsTest, PlayedFilesAreZeroAndTheTaskIsStopped) {
    WriteNoise("file.pcm", kHeaderBytes + 3 * kChunkBytes);
    EXPECT_EQ(0, PlayFiles({.files = "file.pcm"}));
    EXPECT_TRUE(WaitForExactLine("K740_StopTask(1001)"));
    EXPECT_EQ(1, CountExactLines("Start to play file file.pcm, repeat 1/1, ..."));
    EXPECT_TRUE(Reports().WaitFor(kTask, 0));
    EXPECT_EQ((std::vector<int>{1, 2, 0}), Reports().Of(kTask));
}

TEST_F(FileTaskCallsTest, PathsAreTrimmedAndMissingFilesLoggedOnEveryPass) {
    WriteNoise("good one.pcm", kHeaderBytes + kChunkBytes);
    EXPECT_EQ(0, PlayFiles({.files = " missing.pcm |  good one.pcm  ", .repeat = 2}));
    EXPECT_TRUE(WaitForExactLine("K740_StopTask(1001)"));
    EXPECT_EQ(2, CountExactLines("*****Failed to open missing.pcm"));
    EXPECT_EQ(1, CountExactLines("Start to play file good one.pcm, repeat 1/2, ..."));
    EXPECT_EQ(1, CountExactLines("Start to play file good one.pcm, repeat 2/2, ..."));
    EXPECT_EQ(2, CountLogLines("Start to play"));
}

TEST_F(FileTaskCallsTest, ATabBelongsToThePath) {
    WriteNoise("file.pcm", 5000);
    EXPECT_EQ(0, PlayFiles({.files = "\tfile.pcm"}));
    EXPECT_TRUE(WaitForExactLine("*****Failed to open \tfile.pcm"));
}

TEST_F(FileTaskCallsTest, AnEmptyPathIsAMissingFile) {
    EXPECT_EQ(0, PlayFiles({.files = "|"}));
    EXPECT_TRUE(WaitForExactLine("K740_StopTask(1001)"));
    EXPECT_EQ(1, CountExactLines("*****Failed to open "));
}

TEST_F(FileTaskCallsTest, AFileThatCannotBeReadIsOverAtOnce) {
    EXPECT_EQ(0, PlayFiles({.files = "."})); // can be opened
    EXPECT_TRUE(WaitForExactLine("Start to play file ., repeat 1/1, ..."));
    EXPECT_EQ(0, CountLogLines("Failed to open"));
    EXPECT_TRUE(AllDatagrams().empty());
}

TEST_F(FileTaskCallsTest, TheLogShowsPathsAsTheyAre) {
    const std::string path = "%s%n%d" + std::string(900, 'x');
    EXPECT_EQ(0, PlayFiles({.files = path.c_str()}));
    EXPECT_TRUE(WaitForLogLine("\t*****Failed to open %s%n%dxxx"));
}

} // namespace
} // namespace k740::test
