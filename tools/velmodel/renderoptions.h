#pragma once

#include <optional>

#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QColor>

#include "camera.h"
#include "commandparser.h"

namespace Atelier::Vel::Tool {

/// What `velmodel render` shall do.
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

/// Reads them. Returns: none when one of them makes no sense; `error` then says which and why.
std::optional<RenderOptions> readRenderOptions(const QCommandLineParser& parser, QString& error);

} // namespace Atelier::Vel::Tool
