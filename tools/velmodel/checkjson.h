#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <velmodel/modelcheck.h>

namespace Atelier::Vel::Tool {

/// The version of the output. It changes if a key changes its meaning or is removed.
constexpr int kCheckJsonVersion = 1;

/// The findings of a file, as docs/check.schema.json describes them.
QJsonObject checkJson(const QString& file, const ModelCheck& check);

} // namespace Atelier::Vel::Tool
