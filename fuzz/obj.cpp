// Compares the OBJ reader with its literal version: record by record and in runs by each parser, with large
// and with tiny blocks, with and without colours.
#include <cstddef>
#include <cstdint>

#include <QtCore/QFile>
#include <QtCore/QTextStream>

#include "claim.h"
#include "import/obj/objreader.h"
#include "literal/literalobjreader.h"
#include "memoryfile.h"
#include "objrecords.h"

using namespace Atelier::Vel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<Testing::Record> readLiterally(QFile& file) {
    QTextStream stream(&file);
    Testing::LiteralObjReader reader(&stream);
    return Testing::takeAll(reader);
}

std::vector<Testing::Record> read(QFile& file, const LineSourceOptions& limits) {
    QTextStream stream(&file);
    ObjReader reader(&stream, limits);
    return Testing::takeAll(reader);
}

Testing::Content readInRuns(QFile& file, const LineSourceOptions& limits, WideParser* wideParser,
                            Testing::Colours colours) {
    QTextStream stream(&file);
    ObjReader reader(&stream, limits, wideParser);
    static ObjRun run;
    run.takesColours = colours == Testing::Colours::Read;
    return Testing::contentInRuns(reader, run);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Fuzzing::MemoryFile text;
    text.write(data, size);
    QFile file;
    text.openText(file);
    const auto rewound = [&file]() -> QFile& {
        file.seek(0);
        return file;
    };
    LineSourceOptions limits;
    if (size % 2 != 0)
        limits.blockBytes = 4 + static_cast<qint64>(size % 61);
    const Testing::Colours colours = size % 3 == 0 ? Testing::Colours::Ignored : Testing::Colours::Read;
    const std::vector<Testing::Record> expected = readLiterally(file);
    Fuzzing::require(read(rewound(), limits) == expected, "records are those of the literal reader");
    // Null selects the portable parser.
    for (WideParser* const wideParser :
         {findAvx512Parser(), findSse41Parser(), static_cast<WideParser*>(nullptr)})
        Fuzzing::require(readInRuns(rewound(), limits, wideParser, colours) ==
                             Testing::contentOf(expected, colours),
                         "runs amount to the records of the literal reader");
    // A text whose continued lines are joined reads the same in blocks of any size and by each parser.
    limits.joinsContinuedLines = true;
    const std::vector<Testing::Record> joined = read(rewound(), limits);
    limits.blockBytes = LineSourceOptions().blockBytes;
    Fuzzing::require(read(rewound(), limits) == joined, "joined lines do not depend on blocks");
    for (WideParser* const wideParser :
         {findAvx512Parser(), findSse41Parser(), static_cast<WideParser*>(nullptr)})
        Fuzzing::require(readInRuns(rewound(), limits, wideParser, colours) ==
                             Testing::contentOf(joined, colours),
                         "runs of joined lines amount to their records");
    return 0;
}
