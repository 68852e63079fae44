#include "import/facecheck.h"

#include <cstring>
#include <memory>
#include <utility>

namespace Atelier::Vel {

namespace {

/// The lines of a run that have a face. All lines of a run begin with their keyword.
class FaceLines {
public:
    FaceLines(const ObjReader& reader, const QString& file) : _reader(reader), _file(file) {}

    /// The line of the face `face`. Requires: numbers do not descend from call to call.
    TextLine line(quint32 face) {
        while (_face <= face) {
            _begin = _next;
            _next = static_cast<const char*>(
                        std::memchr(_begin, '\n', static_cast<size_t>(_reader.runEnd() - _begin))) +
                    1;
            _face += *_begin == 'f' ? 1 : 0;
        }
        return _reader.runLine(_file, _begin, _next - 1);
    }

private:
    const ObjReader& _reader;
    const QString& _file;
    const char* _begin = nullptr;
    const char* _next = _reader.runBegin();
    quint32 _face = 0; ///< the number of the next face
};

// A word of a face.
QString cornerText(const TextLine& line, quint32 corner) {
    return line.text.simplified().section(QLatin1Char(' '), static_cast<int>(corner) + 1,
                                          static_cast<int>(corner) + 1);
}

} // namespace

FaceCheck::FaceCheck(QString file, const ObjLineCounts& counts, const LoadRepairs& repairs,
                     DiagnosticLog& log)
    : _file(std::move(file)), _counts(counts), _repairs(repairs), _log(log) {}

void FaceCheck::read(ObjReader& reader, const std::function<void()>& poll) {
    constexpr qint64 kBytesPerPoll = qint64(4) << 20;
    const auto run = std::make_unique<ObjRun>();
    for (qint64 nextPoll = kBytesPerPoll; reader.hasNext();) {
        if (reader.bytesRead() >= nextPoll) {
            nextPoll += kBytesPerPoll;
            poll();
        }
        if (reader.read() && reader.kind() == ObjReader::Kind::Face)
            checkLine(reader);
        run->clear();
        reader.next(*run);
        checkRun(reader, *run);
    }
}

void FaceCheck::Fault::add(quint32 at) {
    if (count++ == 0)
        corner = at;
}

// In a text without normals, all of them are generated.
bool FaceCheck::lacksNormal(quint32 index) const {
    const bool isNeeded = index != kNoIndex || _repairs.generateMissingNormals;
    return isNeeded && _counts.normals != 0 && index >= _counts.normals;
}

template<typename Corners>
FaceCheck::Faults FaceCheck::examine(quint32 count, const Corners& corners) const {
    Faults faults;
    for (quint32 i = 0; i < count; ++i) {
        const ObjCorner corner = corners(i);
        if (corner.position >= _counts.positions)
            faults.position.add(i);
        if (lacksNormal(corner.normal))
            faults.normal.add(i);
        if (corner.texCoord != kNoIndex && _counts.texCoords != 0 && corner.texCoord >= _counts.texCoords)
            faults.texCoord.add(i);
    }
    return faults;
}

void FaceCheck::checkLine(const ObjReader& reader) {
    const Faults faults = examine(static_cast<quint32>(reader.cornerCount()),
                                  [&](quint32 i) { return reader.corner(static_cast<int>(i)); });
    report(faults, [&] { return reader.line(_file); });
}

void FaceCheck::checkRun(const ObjReader& reader, const ObjRun& run) {
    FaceLines lines(reader, _file);
    size_t first = 0;
    for (quint32 face = 0; face < run.cornerCounts.size; first += run.cornerCounts.items[face++]) {
        const Faults faults = examine(run.cornerCounts.items[face], [&](quint32 i) {
            return ObjCorner{run.positionIndices.items[first + i], run.normalIndices.items[first + i],
                             run.texCoordIndices.items[first + i]};
        });
        report(faults, [&] { return lines.line(face); });
    }
}

template<typename Line, typename Describe>
void FaceCheck::add(Code code, const Fault& fault, const Line& line, const Describe& describe) {
    if (fault.count == 0)
        return;
    if (!_log.keeps(code)) {
        _log.addMore(code, 1);
        return;
    }
    const TextLine place = line();
    const QString text = cornerText(place, fault.corner);
    _log.add(code, place, text, [&] { return describe(text.split(QLatin1Char('/'))); });
}

template<typename Line>
void FaceCheck::report(const Faults& faults, const Line& line) {
    const auto sentence = [](const char* text, int part) {
        return [text, part](const QStringList& parts) {
            return QString::fromLatin1(text).arg(parts.value(part));
        };
    };
    if (_repairs.dropUnplacedFaces && faults.position.count != 0)
        return add(Code::UnplacedFace, faults.position, line,
                   sentence("Position '%1' does not exist, and the face is dropped", 0));
    add(Code::MissingPosition, faults.position, line,
        sentence("Position '%1' does not exist, and the corner lies in the origin", 0));
    add(Code::MissingTexCoord, faults.texCoord, line,
        sentence("Texture coordinate '%1' does not exist, and the corner gets zeros", 1));
    if (_repairs.generateMissingNormals)
        add(Code::MissingNormals, faults.normal, line,
            [&](const QStringList&) { return describeMissingNormals(faults.normal.count); });
    else
        add(Code::MissingNormal, faults.normal, line,
            sentence("Normal '%1' does not exist, and the corner gets zeros", 2));
}

QString describeMissingNormals(quint64 corners) {
    return corners == 1 ? QStringLiteral("1 corner has no normal, and gets a generated one")
                        : QStringLiteral("%1 corners have no normal, and get generated ones").arg(corners);
}

} // namespace Atelier::Vel
