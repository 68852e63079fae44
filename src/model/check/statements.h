#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "check/findinglog.h"
#include "check/linewords.h"
#include "check/skippedkeywords.h"
#include "import/obj/objreader.h"

namespace Atelier::Vel {

/// Examines the text of the statements of an OBJ file: their keywords and words, not what they say together.
class StatementCheck {
public:
    /// `log` must outlive the object.
    StatementCheck(QString file, FindingLog& log);

    /// Examines the current line of the reader, which has read it with the result `isRead`.
    void examine(const ObjReader& reader, bool isRead);
    /// Examines the lines that the reader has added to `run`, which was empty before. The first of them has
    /// the number `firstLine`.
    void examineAdded(std::string_view lines, qint64 firstLine, const ObjRun& run);
    /// Must be called at the end. Returns: what was not examined.
    QStringList finish();

private:
    /// How many numbers a line must have, how many are read, and how many it may have.
    struct NumberCounts {
        int needed;
        int used;
        int allowed;
    };

    void examineLine();
    void examinePosition();
    void examineVertex(const NumberCounts& counts);
    void examineNumber(int word);
    void examineCorners();
    void examineZero(CheckCode code, int word, int number);
    void reportMalformedFace();
    void examineOther();
    void add(CheckCode code, int word, const QString& message);
    FindingPlace placeOf(int word) const;

    QString _file;
    FindingLog& _log;
    LineWords _words; ///< of the current line
    qint64 _line = 0;
    bool _hasColours = false;
    SkippedKeywords _skipped;
};

} // namespace Atelier::Vel
