#pragma once

#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace Atelier::Vel::Viewer {

class ShownModel;

/// Lines of a name and a value, for people.
using StatisticLines = QVector<QPair<QString, QString>>;

/// What is known of a model that was uploaded.
StatisticLines statisticsOf(const ShownModel& model);

/// The bytes that OpenGL holds for a model: indices, vertex attributes, and textures with their smaller
/// levels.
quint64 gpuBytes(const ShownModel& model);

} // namespace Atelier::Vel::Viewer
