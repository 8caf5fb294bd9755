#include "log/log.h"
#include "tests/log/log_fixture.h"

#include <cstring>

namespace k740::test {
namespace {

constexpr int kMaxRecords = 10'240;
constexpr std::size_t kMaxText = 2047; // characters of a line, its time stamp and tab included
constexpr std::size_t kStampAndTab = 22;

class CallbackLogTest : public LogFixture {
protected:
    void Push2(const std::string& type, const std::string& text) { m_log.PushLog2(type, 0, text); }
    /// @return the texts of the type's file after everything queued was written
    std::vector<std::string> Written(const std::string& type) {
        m_log.SaveCallbackLog();
        return LogTexts(type);
    }
    static tagLOG_CALLBACK Record(const char* type, const char* text) {
        tagLOG_CALLBACK record{};
        std::strcpy(record.type, type);
        std::strcpy(record.text, text);
        return record;
    }
};

TEST_F(CallbackLogTest, LineIsTimeStampTabAndText) {
    Push2("PTASKSTATUS", "PTASKSTATUS(1, 2)");
    m_log.SaveCallbackLog();
    const std::string text = ReadLog("PTASKSTATUS");
    EXPECT_TRUE(IsTimeStamp(TimeStampOf(text))) << text;
    EXPECT_EQ("\tPTASKSTATUS(1, 2)\n", text.substr(text.find('\t')));
}

TEST_F(CallbackLogTest, LevelMarksNothing) {
    m_log.PushLog2("PTASKSTATUS", 4, "text");
    EXPECT_EQ(std::vector<std::string>{"text"}, Written("PTASKSTATUS"));
}

TEST_F(CallbackLogTest, EachOfTheElevenTypesHasItsFile) {
    const std::vector<std::string> types{"PZCUSTATUS",   "PZONESTATUS",      "PZCUVOLUME",    "PTASKSTATUS",
                                         "PMONITORZONE", "PRPKSTATUS",       "PRPKPTTAUDIO",  "PTRAINMESSAGE",
                                         "PTRAINAUDIO",  "PINTERCOMMESSAGE", "PINTERCOMAUDIO"};
    for (const std::string& type : types) { Push2(type, type + "()"); }
    m_log.SaveCallbackLog();
    for (const std::string& type : types) { EXPECT_EQ(std::vector<std::string>{type + "()"}, LogTexts(type)); }
    EXPECT_EQ(11, CountFiles());
}

TEST_F(CallbackLogTest, OtherTypesAreDropped) {
    for (const char* type : {"", "PZCU", "PZCUSTATUS2", "pzcustatus", "PZCUSTATUS ", "../escape"}) {
        Push2(type, "dropped");
    }
    m_log.SaveCallbackLog();
    EXPECT_EQ(0, CountFiles());
}

TEST_F(CallbackLogTest, BatchOfOneTypeWritesItsFileOnly) {
    Push2("PZONESTATUS", "1");
    Push2("PZONESTATUS", "2");
    EXPECT_EQ((std::vector<std::string>{"1", "2"}), Written("PZONESTATUS"));
    EXPECT_EQ(1, CountFiles());
}

TEST_F(CallbackLogTest, RecordsKeepTheirOrderWithinAType) {
    Push2("PZONESTATUS", "1");
    Push2("PZCUSTATUS", "2");
    Push2("PZONESTATUS", "3");
    EXPECT_EQ((std::vector<std::string>{"1", "3"}), Written("PZONESTATUS"));
    EXPECT_EQ(std::vector<std::string>{"2"}, LogTexts("PZCUSTATUS"));
}

TEST_F(CallbackLogTest, SDKLogIsNotConcerned) {
    Push2("PZONESTATUS", "1");
    m_log.SaveSDKLog();
    m_log.SaveCallbackLog();
    EXPECT_FALSE(HasFile());
}

TEST_F(CallbackLogTest, LinesOfUpTo2047CharactersAreWhole) {
    const std::size_t fits = kMaxText - kStampAndTab;
    for (const std::size_t length : {fits - 1, fits}) { Push2("PTASKSTATUS", std::string(length, 'x')); }
    const auto texts = Written("PTASKSTATUS");
    ASSERT_EQ(2U, texts.size());
    EXPECT_EQ(fits - 1, texts[0].size());
    EXPECT_EQ(fits, texts[1].size());
}

TEST_F(CallbackLogTest, LongerLinesAreCut) {
    Push2("PTASKSTATUS", std::string(kMaxText - kStampAndTab + 1, 'x'));
    Push2("PTASKSTATUS", std::string(100'000, 'x'));
    m_log.SaveCallbackLog();
    const auto lines = LogLines("PTASKSTATUS");
    ASSERT_EQ(2U, lines.size());
    EXPECT_EQ(kMaxText, lines[0].size());
    EXPECT_EQ(kMaxText, lines[1].size());
}

TEST_F(CallbackLogTest, LongTypeNamesAreNoTypes) {
    Push2("PTASKSTATUS" + std::string(100'000, 'x'), "dropped");
    m_log.SaveCallbackLog();
    EXPECT_EQ(0, CountFiles());
}

TEST_F(CallbackLogTest, RecordsAreBoundedTogetherAndTheOldestGoes) {
    for (int i = 1; i <= kMaxRecords; ++i) { Push2(i % 2 != 0 ? "PZONESTATUS" : "PZCUSTATUS", std::to_string(i)); }
    Push2("PZCUSTATUS", "last");
    const auto zones = Written("PZONESTATUS");
    const auto controllers = LogTexts("PZCUSTATUS");
    EXPECT_EQ(static_cast<std::size_t>(kMaxRecords), zones.size() + controllers.size());
    EXPECT_EQ("3", zones.front());
    EXPECT_EQ("2", controllers.front());
    EXPECT_EQ("last", controllers.back());
}

TEST_F(CallbackLogTest, AsManyRecordsAsTheBoundAreAllKept) {
    for (int i = 1; i <= kMaxRecords; ++i) { Push2("PZONESTATUS", std::to_string(i)); }
    const auto texts = Written("PZONESTATUS");
    EXPECT_EQ(static_cast<std::size_t>(kMaxRecords), texts.size());
    EXPECT_EQ("1", texts.front());
}

TEST_F(CallbackLogTest, RecordsOfAnotherTypeAreNotWrittenToATypesFile) {
    m_log.SaveTypeCallback("PZONESTATUS", {Record("PZCUSTATUS", "other"), Record("PZONESTATUS", "own")});
    EXPECT_EQ("own\n", ReadLog("PZONESTATUS"));
    EXPECT_EQ(1, CountFiles());
}

TEST_F(CallbackLogTest, NoMatchingRecordTouchesNoFile) {
    m_log.SaveTypeCallback("PZONESTATUS", {});
    m_log.SaveTypeCallback("PZONESTATUS", {Record("PZCUSTATUS", "other")});
    EXPECT_EQ(0, CountFiles());
}

TEST_F(CallbackLogTest, FileAbove50MiBIsReplacedByALineThatSaysSo) {
    MakeLogFile(kLogFileBound, "PZONESTATUS");
    MakeLogFile(1, "PZCUSTATUS");
    Push2("PZONESTATUS", "lost");
    Push2("PZCUSTATUS", "kept");
    m_log.SaveCallbackLog();
    const std::string text = ReadLog("PZONESTATUS");
    EXPECT_TRUE(IsTimeStamp(TimeStampOf(text))) << text;
    EXPECT_EQ("\t------------remove log------------\n", text.substr(text.find('\t')));
    EXPECT_EQ(1, CountLogLines("kept", "PZCUSTATUS"));
}

} // namespace
} // namespace k740::test
