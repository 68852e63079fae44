#pragma once

#include <algorithm>
#include <array>
#include <ostream>
#include <utility>
#include <vector>

#include <QtCore/QString>

#include "import/obj/objreader.h"

/// The results of OBJ readers for a text, for comparing readers.
namespace Atelier::Vel::Testing {

/// One record as a reader gives it.
struct Record {
    ObjReader::Kind kind = ObjReader::Kind::None;
    bool ok = false;
    std::array<float, 3> values{};
    ObjColour colour;                            ///< of a position
    std::vector<std::array<quint32, 3>> corners; ///< position, texture coordinate, normal
    QString text;

    // Compares values by their bits, so that zeros have signs and a NaN equals itself.
    friend bool operator==(const Record& a, const Record& b) {
        return a.kind == b.kind && a.ok == b.ok && a.corners == b.corners && a.text == b.text &&
               a.valueBits() == b.valueBits() && a.colour.components == b.colour.components;
    }
    /// Of the values and the colour.
    std::array<quint32, 7> valueBits() const;
    friend void PrintTo(const Record& record, std::ostream* out) {
        *out << static_cast<int>(record.kind) << (record.ok ? " ok " : " failed ") << record.values[0] << ' '
             << record.values[1] << ' ' << record.values[2] << ' ' << record.corners.size() << " corners '"
             << record.text.toStdString() << '\'';
    }
};

template<typename Reader>
Record takeRecord(Reader& reader) {
    Record record;
    record.ok = reader.read();
    record.kind = reader.kind();
    std::copy_n(reader.values(), 3, record.values.begin());
    if (record.kind == ObjReader::Kind::Position)
        record.colour = reader.colour();
    if (record.kind == ObjReader::Kind::Face && record.ok)
        for (int i = 0; i < reader.cornerCount(); ++i)
            record.corners.push_back(
                {reader.corner(i).position, reader.corner(i).texCoord, reader.corner(i).normal});
    record.text = reader.text();
    return record;
}

template<typename Reader>
std::vector<Record> takeAll(Reader& reader) {
    std::vector<Record> records;
    for (; reader.hasNext(); reader.next())
        records.push_back(takeRecord(reader));
    return records;
}

/// What a text amounts to, kind by kind, and what it says between its faces.
struct Content {
    std::vector<quint32> positions; ///< the bits of the numbers
    std::vector<quint32> colours;   ///< four per position, if they are read
    int colourComponents = 0;       ///< the maximum of all positions, if colours are read
    std::vector<quint32> normals;
    std::vector<quint32> texCoords;
    std::vector<quint32> cornerCounts;
    std::vector<quint32> positionIndices; ///< one per corner in each
    std::vector<quint32> normalIndices;
    std::vector<quint32> texCoordIndices;
    std::vector<std::pair<size_t, QString>> switches; ///< at which face, to what
    size_t dropped = 0;

    friend bool operator==(const Content& a, const Content& b) {
        return a.positions == b.positions && a.colours == b.colours &&
               a.colourComponents == b.colourComponents && a.normals == b.normals &&
               a.texCoords == b.texCoords && a.cornerCounts == b.cornerCounts &&
               a.positionIndices == b.positionIndices && a.normalIndices == b.normalIndices &&
               a.texCoordIndices == b.texCoordIndices && a.switches == b.switches && a.dropped == b.dropped;
    }
    friend void PrintTo(const Content& content, std::ostream* out) {
        *out << content.positions.size() << " v " << content.normals.size() << " vn "
             << content.texCoords.size() << " vt " << content.cornerCounts.size() << " f "
             << content.positionIndices.size() << " corners " << content.dropped << " dropped";
    }
};

enum class Colours { Ignored, Read };

Content contentOf(const std::vector<Record>& records, Colours colours = Colours::Ignored);
/// Moves the contents of a run to the end of the content.
void take(ObjRun& run, Content& content);
/// Through runs, the way that a loader takes it. `run`, which is large, is empty before and after. Colours
/// are read if it takes them.
Content contentInRuns(ObjReader& reader, ObjRun& run);

} // namespace Atelier::Vel::Testing
