#pragma once

#include <QtCore/QString>

namespace Atelier::Vel {

/// A line of a text, for observations about it.
struct TextLine {
    QString file;      ///< the name of the text
    qint64 number = 0; ///< from 1; 0 if it is not known
    QString text = {}; ///< without its end; a continued line includes those that continue it

    /// The column of `part`: where it is a whole word behind the keyword, or else where the operands begin.
    /// Returns: the number of a character, from 1; 0 if the text is not known.
    int columnOf(const QString& part) const;
};

} // namespace Atelier::Vel
