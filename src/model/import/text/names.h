#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Atelier::Vel {

/// `text` up to a '#' at its start or after white space, without white space at both ends.
QString withoutComment(const QString& text);

/// `text` without the pair of double or single quotes around all of it.
QString unquoted(const QString& text);

/// The words of `text`. A part in double or single quotes is one word, without the quotes.
QStringList wordsOf(const QString& text);

/// What the rest of a line may name, the most probable first: all of it, its text before a comment, and its
/// first word. Quotes around them are removed, and equal ones occur once. Not empty.
QStringList nameCandidates(const QString& rest);

} // namespace Atelier::Vel
