#include "lineparsers.h"

#include "emulation/emulatedavx512.h"
#include "import/text/linesource.h"

namespace Atelier::Vel::Testing {

namespace {

constexpr LineParser kPortable = {"Portable", nullptr};
constexpr LineParser kSse41 = {"Sse41", findSse41Parser};
constexpr LineParser kAvx512 = {"Avx512", findAvx512Parser};
constexpr LineParser kEmulatedAvx512 = {"EmulatedAvx512", findEmulatedAvx512Parser};

constexpr int kPadding = static_cast<int>(LineSource::kPadding);

} // namespace

void PrintTo(const LineParser& parser, std::ostream* out) {
    *out << parser.name;
}

std::string nameOf(const testing::TestParamInfo<LineParser>& parser) {
    return parser.param.name;
}

std::vector<LineParser> wideParsers() {
    return {kSse41, kAvx512, kEmulatedAvx512};
}

std::vector<LineParser> nativeParsers() {
    return {kPortable, kSse41, kAvx512};
}

std::vector<LineParser> allParsers() {
    return {kPortable, kSse41, kAvx512, kEmulatedAvx512};
}

void LineParserTest::SetUp() {
    _wideParser = GetParam().find == nullptr ? nullptr : GetParam().find();
    if (GetParam().find != nullptr && _wideParser == nullptr)
        GTEST_SKIP() << "this processor lacks the instructions of the parser " << GetParam().name;
}

LaidOutText::LaidOutText(const QByteArray& text, char around) : _size(text.size()) {
    const QByteArray padding(kPadding, around);
    _block = padding + text + padding + '\n' + padding;
}

const char* LaidOutText::begin() const {
    return _block.constData() + kPadding;
}

ParsedLines parse(const QByteArray& text, WideParser* wideParser, char around) {
    ParsedLines parsed;
    parse(text, wideParser, around, parsed);
    return parsed;
}

void parse(const QByteArray& text, WideParser* wideParser, char around, ParsedLines& parsed) {
    const LaidOutText lines(text, around);
    ObjRun& run = *parsed.run;
    run.positions.size = run.normals.size = run.texCoords.size = run.cornerCounts.size = 0;
    run.colours.size = 0;
    run.colourComponents = 0;
    run.positionIndices.size = run.normalIndices.size = run.texCoordIndices.size = 0;
    parsed.counts = {1, 1, 1};
    const char* end = parsePlainLines(lines.begin(), lines.end(), parsed.counts, run, wideParser);
    parsed.taken = static_cast<int>(end - lines.begin());
}

} // namespace Atelier::Vel::Testing
