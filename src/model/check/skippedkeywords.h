#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QVector>

#include "check/findinglog.h"

namespace Atelier::Vel {

/// The lines of a file with a keyword that a load skips.
class SkippedKeywords {
public:
    /// The number of different keywords that are counted.
    static constexpr int kMaxKeywords = 1000;

    void add(const QString& keyword, const FindingPlace& place);
    /// Adds one finding for each keyword. `purposeOf(keyword)` returns what it is for; null if it is unknown.
    void report(FindingLog& log, QString (*purposeOf)(const QString& keyword)) const;
    /// The number of lines whose keyword was not counted.
    quint64 uncounted() const { return _uncounted; }

private:
    struct Keyword {
        QString name;
        FindingPlace place; ///< of the first line
        quint64 lines = 0;
    };

    QVector<Keyword> _keywords; ///< in the order of their first lines
    QHash<QString, int> _indices;
    quint64 _uncounted = 0;
};

/// What an OBJ keyword that a load skips is for; null for a word that is no keyword.
QString purposeOfObjKeyword(const QString& keyword);
/// The same for MTL.
QString purposeOfMtlKeyword(const QString& keyword);
/// Whether an MTL keyword that a load skips would not change what is drawn.
bool isIrrelevantMtlKeyword(const QString& keyword);

} // namespace Atelier::Vel
