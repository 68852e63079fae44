#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonValue>

namespace Atelier::Vel::Tool {

/// A number in its shortest spelling that a reader converts back to the same bits, whether it reads floats or
/// doubles. Values that JSON has no number for become the string "nan", "inf" or "-inf".
/// Requires: the value is put into an array only, and printed by jsonText().
QJsonValue jsonFloat(float value);

/// The 32-bit floats that `bytes` holds; a remainder of fewer than four bytes is ignored.
QJsonArray jsonFloats(const QByteArray& bytes);

/// The document as text, with keys sorted, one value per line.
QByteArray jsonText(const QJsonDocument& document);

} // namespace Atelier::Vel::Tool
