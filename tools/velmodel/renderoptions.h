#pragma once

#include <optional>

#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QColor>

#include "camera.h"
#include "commandparser.h"
#include "shaders.h"

namespace Atelier::Vel::Tool {

/// The limit of --exposure in both directions, in stops.
constexpr double kMaxExposure = 10;

/// The options of `velmodel render`.
struct RenderOptions {
    QString file;
    QString output;
    QSize resolution;
    QColor background; ///< invalid for none
    CameraOptions camera;
    QStringList parts; ///< the names of those that are shown; empty for all
    bool wireframe = false;
    MaterialColours colours = MaterialColours::SRgb;
    double exposure = 0; ///< in stops
    bool ambientOcclusion = false;
    int turntable = 0; ///< number of frames; 0 for a single picture
};

/// Declares the options of the command.
void addRenderOptions(QCommandLineParser& parser);

/// Reads the options. Returns: none if an option is not valid; `error` then names it and the cause.
std::optional<RenderOptions> readRenderOptions(const QCommandLineParser& parser, QString& error);

} // namespace Atelier::Vel::Tool
