// Replays every seed (fuzz/corpus/<target>/) and every input that once
// failed (fuzz/regressions/<target>/) through the fuzz harness itself, on
// every build: the harness's checks are the assertions.  Well-formed seeds
// (ok-*) must draw something without a single report.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "../fuzz/harness.cpp"
#include "library.h"

namespace fuzz {
void PrintTo(const Target &t, std::ostream *os) { *os << t.name; }  // in test names
}  // namespace fuzz

namespace {

namespace fs = std::filesystem;
const fs::path kFuzz = fs::path(__FILE__).parent_path().parent_path() / "fuzz";

class Replay : public ::testing::TestWithParam<fuzz::Target> {};

TEST_P(Replay, SeedsAndRegressionsPassTheHarnessChecks) {
    fuzz::onFailure = [](const char *what) { ADD_FAILURE() << what; };
    test::failNextMallocs(0);  // every reservation succeeds (the test support wraps malloc)
    int seeds = 0;
    for (const char *dir : {"corpus", "regressions"}) {
        if (!fs::is_directory(kFuzz / dir / GetParam().name)) continue;
        for (const auto &file : fs::directory_iterator(kFuzz / dir / GetParam().name)) {
            SCOPED_TRACE(file.path().string());
            std::ifstream in(file.path(), std::ios::binary);
            const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};
            fuzz::Reader reader(bytes.data(), bytes.size());
            GetParam().run(reader);
            seeds += std::string(dir) == "corpus";
            if (file.path().filename().string().rfind("ok-", 0) == 0) {
                EXPECT_EQ(fuzz::reports, 0);
                EXPECT_GT(fuzz::drawn, 0);
            }
        }
    }
    EXPECT_GT(seeds, 1) << "seeds for " << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(FuzzTargets, Replay, ::testing::ValuesIn(fuzz::kTargets),
                         [](const auto &info) { return std::string(info.param.name); });

// The scripts build and run the targets listed in fuzz/targets.txt.
TEST(FuzzTargets, ListMatchesTheHarness) {
    std::ifstream in(kFuzz / "targets.txt");
    std::vector<std::string> listed{std::istream_iterator<std::string>(in), {}}, names;
    for (const fuzz::Target &t : fuzz::kTargets) names.emplace_back(t.name);
    EXPECT_EQ(listed, names);
}

}  // namespace
