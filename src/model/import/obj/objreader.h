#pragma once

#include <string_view>
#include <vector>

#include <QtCore/QString>
#include <QtCore/QTextStream>

#include "import/obj/plainlines.h"
#include "import/text/linesource.h"

namespace Atelier::Vel {

/// One corner of a face: 0-based numbers of its "v", "vn" and "vt" line.
struct ObjCorner {
    quint32 position;
    quint32 normal;
    quint32 texCoord;
};

/// Keywords that are known only if they are wanted.
struct ObjKeywords {
    bool smoothing = false; ///< "s"
    bool parts = false;     ///< "o" and "g"
    bool others = false;    ///< all other words: lines that begin with them are of kind Other
};

/// Reads Wavefront OBJ text line by line and knows six keywords, and those that are wanted. All other lines
/// are skipped.
///
/// Construct it with an open stream. As long as hasNext() is true, call read(), use the record according to
/// kind() if read() returned true, and call next().
class ObjReader {
public:
    enum class Kind : quint32 {
        Position,        ///< "v"
        Normal,          ///< "vn"
        TexCoord,        ///< "vt"
        Face,            ///< "f"
        MaterialLibrary, ///< "mtllib"
        UseMaterial,     ///< "usemtl"
        Object,          ///< "o"
        Group,           ///< "g"
        SmoothingGroup,  ///< "s"
        Other,           ///< an unknown keyword
        End,             ///< after the last line
        None,            ///< no known line
    };

    /// Advances to the first known line. `stream` must outlive the reader. next(ObjRun&) parses plain lines
    /// with `wideParser`, which may be null.
    explicit ObjReader(QTextStream* stream, const LineSourceOptions& options = {},
                       WideParser* wideParser = findWideParser(), ObjKeywords keywords = {});

    bool hasNext() const { return _kind != Kind::End; }
    /// Advances to the next known line.
    void next();
    /// The same, except that the next lines are parsed and added to `run` directly if that is faster; these
    /// lines need no read(). Returns with kind() None if the run is full or a block of text is finished;
    /// values(), corner() and text() are unspecified until the next read().
    void next(ObjRun& run);
    /// Parses the operands of the current line. Returns: false for a face with a corner that is not an
    /// integer, after the last line, and if the stream is in an error state.
    bool read();

    Kind kind() const { return _kind; }
    /// x, y and z of a vertex line. A line without z leaves the previous z unchanged.
    const float* values() const { return _values; }
    /// The colour of a "v" line. The line has one if QString::toDouble() reads all of its words, and these
    /// are six or seven; a word that begins with '#' begins a comment.
    ObjColour colour() const;
    int cornerCount() const { return static_cast<int>(_corners.size()); }
    ObjCorner corner(int i) const { return _corners[static_cast<size_t>(i)]; }
    /// The number of bytes of the file read so far.
    qint64 bytesRead() const { return _lines.bytesRead(); }
    /// The name of a material library or of a material, or a smoothing group: the first word after the
    /// keyword. For parts, the same as rest().
    const QString& text() const { return _text; }
    /// All text after the keyword of the current line, without white space around it.
    QString rest() const { return _lines.text(_operands, _lines.end()).trimmed(); }
    /// The lines, of which the current one is the line of the record.
    const LineSource& lines() const { return _lines; }
    /// The current line, see LineSource::line().
    TextLine line(const QString& file) const { return _lines.line(file); }
    /// The lines that the last next() added to its run, until the next one. runLine() returns one of them.
    const char* runBegin() const { return _runBegin; }
    const char* runEnd() const { return _runEnd; }
    TextLine runLine(const QString& file, const char* first, const char* last) const {
        return _lines.lineInMemory(file, first, last);
    }
    /// The number of lines of each kind so far.
    const ObjLineCounts& counts() const { return _counts; }
    /// The corner because of which read() has returned false for a face.
    QString badCorner() const {
        return _lines.text(_badCorner.data(), _badCorner.data() + _badCorner.size());
    }

private:
    void nextLine();
    bool isAtBlockEnd() const { return _lines.wholeLinesBegin() == _lines.wholeLinesEnd(); }
    std::string_view nextToken() { return takeToken(_unread); }
    /// The token after `unread`, which is moved behind it; empty after the last one.
    std::string_view takeToken(const char*& unread) const;
    float toFloat(std::string_view token, bool* isNumber = nullptr) const;
    float nextFloat() { return toFloat(nextToken()); }
    QString nextText();
    bool toIndex(std::string_view number, quint32 count, quint32& index) const;
    bool readCorner(std::string_view token);
    bool readFace();
    Kind classify(std::string_view keyword);
    Kind classifyOptional(std::string_view keyword) const;

    QTextStream* _stream;
    LineSource _lines;
    WideParser* _wideParser;
    ObjKeywords _keywords;
    const char* _operands = nullptr; ///< after the keyword of the current line
    const char* _runBegin = nullptr;
    const char* _runEnd = nullptr;
    const char* _unread = nullptr; ///< after the last token that was read
    bool _ok = false;
    Kind _kind = Kind::None;
    float _values[3] = {};
    QString _text;
    std::vector<ObjCorner> _corners;
    std::string_view _badCorner; ///< of the current line
    ObjLineCounts _counts;
};

} // namespace Atelier::Vel
