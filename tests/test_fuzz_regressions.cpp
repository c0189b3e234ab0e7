// Replays every input kept with the fuzz targets, the seed corpora
// (fuzz/corpus/<target>/) and the inputs that once crashed a target
// (fuzz/regressions/<target>/), through the very harness code the fuzz
// targets run, on every build of the tests.  The harness sources are compiled
// into this test directly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "../fuzz/harness/bitmap.cpp"
#include "../fuzz/harness/common.cpp"
#include "../fuzz/harness/orders.cpp"
#include "../fuzz/harness/primitives.cpp"
#include "../fuzz/harness/rfb.cpp"
#include "../fuzz/harness/targets.cpp"
#include "../fuzz/harness/text.cpp"

namespace {

namespace fs = std::filesystem;

const fs::path kFuzzDir = fs::path(__FILE__).parent_path().parent_path() / "fuzz";

// Failed harness checks of the current replay.
std::vector<std::string> failures;
void recordFailure(const char *what) { failures.emplace_back(what); }

std::vector<uint8_t> readFile(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The files of one kept-input directory, in name order (none when absent).
std::vector<fs::path> inputsIn(const fs::path &dir) {
    std::vector<fs::path> files;
    if (!fs::is_directory(dir)) return files;
    for (const auto &entry : fs::directory_iterator(dir))
        if (entry.is_regular_file() && entry.path().filename().string()[0] != '.') files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::string> targetNames() {
    size_t count = 0;
    const fuzzharness::Target *all = fuzzharness::targets(count);
    std::vector<std::string> names;
    for (size_t i = 0; i < count; ++i) names.emplace_back(all[i].name);
    return names;
}

// One input, in a heap block of its exact size as libFuzzer hands it over.
void replay(const fuzzharness::Target &target, const fs::path &file) {
    SCOPED_TRACE(file.string());
    const std::vector<uint8_t> bytes = readFile(file);
    fuzzharness::Block input(bytes.data(), bytes.size());
    failures.clear();
    fuzzharness::setFailureHandler(recordFailure);
    target.run(input.data(), input.size());
    fuzzharness::setFailureHandler(nullptr);
    for (const std::string &failure : failures) ADD_FAILURE() << failure;
    // Well-formed seeds draw without a single report.
    if (file.filename().string().rfind("ok-", 0) == 0) {
        EXPECT_EQ(fuzzharness::reportCount, 0u) << "a well-formed input was reported: " << fuzzharness::firstReport;
        EXPECT_GT(fuzzharness::drawnCount, 0u) << "a well-formed input drew nothing";
    }
}

class FuzzInputs : public ::testing::TestWithParam<std::string> {};

TEST_P(FuzzInputs, ReplayWithoutFailedChecks) {
    const fuzzharness::Target *target = fuzzharness::findTarget(GetParam().c_str());
    ASSERT_NE(target, nullptr);
    const std::vector<fs::path> seeds = inputsIn(kFuzzDir / "corpus" / GetParam());
    const std::vector<fs::path> regressions = inputsIn(kFuzzDir / "regressions" / GetParam());
    ASSERT_FALSE(seeds.empty()) << "no seed corpus for " << GetParam();
    EXPECT_TRUE(std::any_of(seeds.begin(), seeds.end(),
                            [](const fs::path &p) { return p.filename().string().rfind("ok-", 0) == 0; }))
        << "no well-formed seed for " << GetParam();
    for (const fs::path &file : seeds) replay(*target, file);
    for (const fs::path &file : regressions) replay(*target, file);
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzInputs, ::testing::ValuesIn(targetNames()),
                         [](const ::testing::TestParamInfo<std::string> &info) { return info.param; });

// The build and run scripts take the target list from fuzz/targets.txt.
TEST(FuzzTargets, ListMatchesTheHarnesses) {
    std::ifstream in(kFuzzDir / "targets.txt");
    std::vector<std::string> listed;
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) listed.push_back(line);
    EXPECT_EQ(listed, targetNames());
}

// The checks that every harness makes after a call must fire on the faults
// they exist for.  A 40 x 40 frame with one padding word per row and every
// tile marked (or none), tampered with between before() and after().
struct Tamper {
    const char *name;
    bool tilesMarked;
    void (*apply)(fuzzharness::Frame &frame);
    const char *expected;
};

const Tamper kTampers[] = {
    {"tile byte 2", false, [](fuzzharness::Frame &f) { f.dirty()->tiles[1] = 2; }, "neither 0 nor 1"},
    {"tile cleared", true, [](fuzzharness::Frame &f) { f.dirty()->tiles[0] = 0; }, "was cleared"},
    {"tile marked, changed left 0", false, [](fuzzharness::Frame &f) { f.dirty()->tiles[0] = 1; },
     "without setting dirty.changed"},
    {"changed 2", false, [](fuzzharness::Frame &f) { f.dirty()->changed = 2; }, "neither 0 nor 1"},
    {"changed pad written", false, [](fuzzharness::Frame &f) { f.dirty()->changedPad[0] = 0; },
     "outside dirty.changed"},
    {"image width written", false, [](fuzzharness::Frame &f) { f.image()->width = 39; }, "outside dirty.changed"},
    {"origin written", false, [](fuzzharness::Frame &f) { f.surface()->originX = 1; }, "outside dirty.changed"},
    {"padding word written", false, [](fuzzharness::Frame &f) { f.image()->pixels[40] = 0; },
     "padding word between image rows"},
};

class HarnessChecks : public ::testing::TestWithParam<Tamper> {};

TEST_P(HarnessChecks, CatchTheFault) {
    const Tamper &t = GetParam();
    // width, height, shape (one padding word, tile pattern follows),
    // special, origin x and y (small values), tile pattern.
    const uint8_t control[] = {40, 40, 0x21, 0, 0xe0, 0, 0xe0, 0, uint8_t(t.tilesMarked ? 0xff : 0)};
    fuzzharness::Reader reader(control, sizeof control);
    fuzzharness::Frame frame(reader);
    ASSERT_EQ(frame.dirty()->columns * frame.dirty()->rows, 4);

    failures.clear();
    fuzzharness::setFailureHandler(recordFailure);
    frame.before();
    frame.after();
    EXPECT_TRUE(failures.empty()) << "an untouched frame fails: " << failures.front();
    frame.before();
    t.apply(frame);
    frame.after();
    fuzzharness::setFailureHandler(nullptr);
    ASSERT_FALSE(failures.empty());
    EXPECT_NE(failures.front().find(t.expected), std::string::npos) << failures.front();
}

INSTANTIATE_TEST_SUITE_P(Faults, HarnessChecks, ::testing::ValuesIn(kTampers),
                         [](const ::testing::TestParamInfo<Tamper> &info) {
                             std::string name = info.param.name;
                             std::replace_if(
                                 name.begin(), name.end(), [](char ch) { return !std::isalnum(ch); }, '_');
                             return name;
                         });

// The log callback refuses reports of the wrong shape.
TEST(HarnessChecks, ReportOfUnknownModuleFails) {
    failures.clear();
    fuzzharness::setFailureHandler(recordFailure);
    fuzzharness::common_detail::checkReport("ERROR", "ui", 1, "%d", 1);
    EXPECT_TRUE(failures.empty());
    fuzzharness::common_detail::checkReport("ERROR", "video", 1, "%d", 1);
    fuzzharness::common_detail::checkReport("WARN", "ui", 1, "%d", 1);
    fuzzharness::setFailureHandler(nullptr);
    EXPECT_EQ(failures.size(), 2u);
}

}  // namespace
