#include "sim/wav_file.h"
#include "sim/wav_writer.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace k740::test {
namespace {

class WavWriterTest : public ::testing::Test {
    const TemporaryDirectory m_directory;
};

TEST_F(WavWriterTest, AFileIsCompleteAfterFlush) {
    sim::WavWriter writer("heard.wav");
    writer.Append({1, 2});
    writer.Append({3});
    writer.Flush();
    EXPECT_EQ((std::vector<std::int16_t>{1, 2, 3}), sim::ReadWav("heard.wav"));
}

TEST_F(WavWriterTest, AFileTakesItsMostSamplesAndNotOneMore) {
    sim::WavWriter writer("heard.wav", 4);
    writer.Append({1, 2, 3});
    writer.Append({4});
    EXPECT_THROW(writer.Append({5}), std::runtime_error);
    writer.Flush();
    EXPECT_EQ(4U, sim::ReadWav("heard.wav").size());
}

TEST_F(WavWriterTest, ItsMostSamplesAreThoseThatAHeaderCanCount) {
    constexpr std::size_t kMostBytes = 0xFFFFFFFF;
    constexpr std::size_t kHeaderBytes = 44;
    EXPECT_LE(2 * sim::WavWriter::kMostSamples + kHeaderBytes, kMostBytes);
}

} // namespace
} // namespace k740::test
