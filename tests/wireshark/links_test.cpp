// Which answer belongs to which request.
#include "sim/paging_records.h"
#include "sim/records.h"
#include "tests/wireshark/packets.h"

namespace k740::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kAnswerTo = "k740.answer_to";
constexpr const char* kAnsweredIn = "k740.answered_in";
constexpr const char* kJoinedIn = "k740.joined_in";
constexpr const char* kResponseTime = "k740.response_time";

/// Builds a capture of requests and answers and asks what is linked with what.
class LinksTest : public DissectorTest {
protected:
    void Request(std::uint16_t code, const sim::Bytes& payload = {}, std::uint32_t device = kController) {
        m_capture->Add(test::Request(code, payload, device), kHost, AddressOf(device));
    }
    void Answer(std::uint16_t code, const sim::Bytes& payload = {}, std::uint32_t device = kController) {
        m_capture->Add(test::Answer(code, payload, device), AddressOf(device), {kHost.ip, sim::kReplyPort});
    }
    void Wait(std::chrono::microseconds time) { m_capture->Wait(time); }

    /// Links are complete once all frames have been read before, as they have in a window.
    std::vector<Row> Links(const std::string& options = "-2") {
        m_capture.reset();
        return Dissect(kCapture, {kAnswerTo, kAnsweredIn, kJoinedIn, kResponseTime, kExpert}, options);
    }
    /// @return the answered request of each frame, "" for none
    std::vector<std::string> AnswerTo(const std::string& options = "-2") { return Column(Links(options), kAnswerTo); }

    static sim::Endpoint AddressOf(std::uint32_t device) {
        return {"192.168." + std::to_string(device / 256) + "." + std::to_string(device % 256), sim::kRequestPort};
    }

    std::unique_ptr<CaptureFile> m_capture = std::make_unique<CaptureFile>(kCapture);
};

TEST_F(LinksTest, ARequestAndItsAnswerNameEachOther) {
    Request(0x0303);
    Wait(2500us);
    Answer(0x8303, sim::Bytes(65, 0));
    const std::vector<Row> rows = Links();
    EXPECT_EQ("2", rows.at(0).at(kAnsweredIn));
    EXPECT_EQ("1", rows.at(1).at(kAnswerTo));
    EXPECT_EQ("0.003500000", rows.at(1).at(kResponseTime));
}

TEST_F(LinksTest, AnswersKnowTheirRequestsOnTheFirstReading) {
    Request(0x0303);
    Answer(0x8303, sim::Bytes(65, 0));
    EXPECT_EQ((std::vector<std::string>{"", "1"}), AnswerTo(""));
}

TEST_F(LinksTest, DevicesAreToldApart) {
    Request(0x0303, {}, 33);
    Request(0x0303, {}, 34);
    Answer(0x8303, sim::Bytes(65, 0), 34);
    Answer(0x8303, sim::Bytes(65, 0), 33);
    Answer(0x8303, sim::Bytes(65, 0), 35);
    EXPECT_EQ((std::vector<std::string>{"", "", "2", "1", ""}), AnswerTo());
}

TEST_F(LinksTest, RequestsAreAnsweredInTheirOrder) {
    for (std::uint8_t channel = 0; channel < 4; ++channel) { Request(0x0109, {channel, 5}); }
    for (int channel = 0; channel < 4; ++channel) { Answer(0x8109); }
    EXPECT_EQ((std::vector<std::string>{"", "", "", "", "1", "2", "3", "4"}), AnswerTo());
}

TEST_F(LinksTest, ARequestIsGivenUpAfterFourSeconds) {
    constexpr std::chrono::milliseconds kFrame{1}; // of which two lie between the first request and the answer
    for (const auto wait : {4000ms - 2 * kFrame, 4000ms - kFrame}) {
        Request(0x0303);
        Wait(wait);
        Request(0x0303);
        Answer(0x8303, sim::Bytes(65, 0));
        Wait(10s);
    }
    EXPECT_EQ((std::vector<std::string>{"", "", "1", "", "", "5"}), AnswerTo());
}

TEST_F(LinksTest, ASecondAnswerIsMarked) {
    Request(0x0303);
    Answer(0x8303, sim::Bytes(65, 0));
    Answer(0x8303, sim::Bytes(65, 0));
    const std::vector<Row> rows = Links();
    EXPECT_EQ("2;3", rows.at(0).at(kAnsweredIn));
    EXPECT_EQ("", rows.at(1).at(kExpert));
    EXPECT_EQ("1", rows.at(2).at(kAnswerTo));
    EXPECT_EQ("The request was answered before", rows.at(2).at(kExpert));
}

sim::Bytes Play(std::uint16_t sequence, std::uint32_t task) {
    sim::PlayRequest play;
    play.sequence = sequence;
    play.taskId = task;
    play.group = "225.0.0.1";
    return Payload(play);
}

sim::Bytes PlayAnswer(std::uint16_t sequence, std::uint32_t task, std::uint32_t token) {
    sim::PlayAnswer answer;
    answer.sequence = sequence;
    answer.taskId = task;
    answer.tokenA = token;
    return Payload(answer);
}

TEST_F(LinksTest, PlayAnswersAreToldApartByTaskAndSequence) {
    Request(0x0205, Play(1, 1001));
    Request(0x0205, Play(2, 1002));
    Answer(0x8205, PlayAnswer(1, 1001, 7));
    Answer(0x8205, PlayAnswer(2, 1002, 8));
    Answer(0x8205, PlayAnswer(3, 1002, 9));
    EXPECT_EQ((std::vector<std::string>{"", "", "1", "2", ""}), AnswerTo());
}

TEST_F(LinksTest, AJoinReportBelongsToTheRequestThatGotItsTokens) {
    Request(0x0205, Play(1, 1001));
    Request(0x0205, Play(2, 1002));
    Answer(0x8205, PlayAnswer(1, 1001, 7));
    Answer(0x8205, PlayAnswer(2, 1002, 8));
    Answer(0x8206, Payload(sim::JoinReport{1, 8, 0}));
    Answer(0x8206, Payload(sim::JoinReport{1, 7, 0}));
    Answer(0x8206, Payload(sim::JoinReport{1, 6, 0}));
    const std::vector<Row> rows = Links();
    EXPECT_EQ("6", rows.at(0).at(kJoinedIn));
    EXPECT_EQ("5", rows.at(1).at(kJoinedIn));
    EXPECT_EQ("2", rows.at(4).at(kAnswerTo));
    EXPECT_EQ("1", rows.at(5).at(kAnswerTo));
    EXPECT_EQ("", rows.at(6).at(kAnswerTo));
}

TEST_F(LinksTest, OnlyTheFirstStatusOfAStationAnswersAHeartbeat) {
    Request(0x0700, {28, 37, 0, 0}, kStation);
    Answer(0x8700, sim::Bytes(9, 1), kStation);
    Answer(0x8700, sim::Bytes(9, 1), kStation);
    EXPECT_EQ((std::vector<std::string>{"", "1", ""}), AnswerTo());
}

TEST_F(LinksTest, ACallIsAnsweredUntilItIsAcceptedOrRefused) {
    const auto call = [this](bool fromStation, std::uint16_t code, const sim::Bytes& payload) {
        const auto [from, to] = fromStation ? std::pair(kStation, kIntercom) : std::pair(kIntercom, kStation);
        const sim::Endpoint station = AddressOf(kStation);
        m_capture->Add(Command(from, to, code, payload), fromStation ? station : kHost, fromStation ? kHost : station);
    };
    call(true, 0x0701, sim::InvitePayload());
    call(false, 0x8701, sim::CallAnswerPayload(0));
    call(false, 0x8701, sim::CallAnswerPayload(1));
    call(false, 0x8701, sim::CallAnswerPayload(2)); // the end of the call answers nothing
    const std::vector<Row> rows = Links();
    EXPECT_EQ("2;3", rows.at(0).at(kAnsweredIn));
    EXPECT_EQ("1", rows.at(1).at(kAnswerTo));
    EXPECT_EQ("1", rows.at(2).at(kAnswerTo));
    EXPECT_EQ("", rows.at(2).at(kExpert));
    EXPECT_EQ("", rows.at(3).at(kAnswerTo));
}

TEST_F(LinksTest, TheHostAnswersExtensionsInItsOwnName) {
    const sim::Endpoint device = AddressOf(kAux);
    m_capture->Add(Command(kAux, kVirtualController, 0x0313, sim::Bytes(28, 1)), device, {kHost.ip, sim::kReplyPort});
    m_capture->Add(Command(kNode, kAux, 0x8313, {1}), kHost, device);
    EXPECT_EQ((std::vector<std::string>{"", "1"}), AnswerTo());
}

TEST_F(LinksTest, AStatusAnswersNothing) {
    Request(0x0125, {28, 37, 0, 0});
    Answer(0x8126, sim::Bytes(85, 0));
    EXPECT_EQ((std::vector<std::string>{"", ""}), AnswerTo());
}

} // namespace
} // namespace k740::test
