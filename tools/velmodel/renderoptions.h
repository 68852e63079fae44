#pragma once

#include <optional>

#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QColor>

#include "camera.h"
#include "commandparser.h"

namespace Atelier::Vel::Tool {

/// The options of `velmodel render`.
struct RenderOptions {
    QString file;
    QString output;
    QSize resolution;
    QColor background; ///< invalid for none
    CameraOptions camera;
    bool wireframe = false;
    int turntable = 0; ///< number of frames; 0 for a single picture
};

/// Declares the options of the command.
void addRenderOptions(QCommandLineParser& parser);

/// Reads the options. Returns: none if an option is not valid; `error` then names it and the cause.
std::optional<RenderOptions> readRenderOptions(const QCommandLineParser& parser, QString& error);

} // namespace Atelier::Vel::Tool
