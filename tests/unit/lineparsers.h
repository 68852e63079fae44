#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <QtCore/QByteArray>

#include <gtest/gtest.h>

#include "import/obj/objrun.h"
#include "import/obj/plainlines.h"

/// The ways to parse plain lines, so that tests run with each of them.
namespace Atelier::Vel::Testing {

struct LineParser {
    const char* name;
    WideParser* (*find)(); ///< null for the portable way
};

void PrintTo(const LineParser& parser, std::ostream* out);
std::string nameOf(const testing::TestParamInfo<LineParser>& parser);

/// The AVX-512 parser twice: with the processor's instructions, and with emulated ones.
std::vector<LineParser> wideParsers();
/// The portable parser, and the parsers that use the processor's own instructions.
std::vector<LineParser> nativeParsers();
/// Those, and the emulated parser.
std::vector<LineParser> allParsers();

/// A test with one parser; skipped if the processor lacks its instructions.
class LineParserTest : public testing::TestWithParam<LineParser> {
protected:
    void SetUp() override;

    WideParser* _wideParser = nullptr;
};

/// A text as a line source stores it, with other bytes around it. Digits after the text end at some byte.
class LaidOutText {
public:
    explicit LaidOutText(const QByteArray& text, char around = '7');

    const char* begin() const;
    const char* end() const { return begin() + _size; }

private:
    QByteArray _block;
    int _size;
};

/// The result of parsing a text.
struct ParsedLines {
    std::unique_ptr<ObjRun> run{new ObjRun};
    ObjLineCounts counts = {1, 1, 1}; ///< the state after the first line of each kind
    int taken = 0;                    ///< bytes
};

ParsedLines parse(const QByteArray& text, WideParser* wideParser, char around = '7');
/// The same into what was made of an earlier text, which is forgotten. Reads colours if its run takes them.
void parse(const QByteArray& text, WideParser* wideParser, char around, ParsedLines& parsed);

} // namespace Atelier::Vel::Testing
