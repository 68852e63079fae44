#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonValue>

namespace Atelier::Vel::Tool {

/// A number in the shortest spelling that reads back to the same bits, as a float and as a double alike.
/// What JSON has no number for is the string "nan", "inf" or "-inf". To be put into arrays only, and printed
/// by jsonText().
QJsonValue jsonFloat(float value);

/// The 32-bit floats that `bytes` holds; a remainder of fewer than four bytes is left out.
QJsonArray jsonFloats(const QByteArray& bytes);

/// The document as text, with keys sorted, one value per line.
QByteArray jsonText(const QJsonDocument& document);

} // namespace Atelier::Vel::Tool
