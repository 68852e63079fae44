#include "renderoptions.h"

#include <algorithm>
#include <cmath>

#include <QtCore/QRegularExpression>

#include "pictureoutput.h"

namespace Atelier::Vel::Tool {

namespace {

constexpr int kMaxSide = 16384;
constexpr int kMaxFrames = 100000;

QString backgroundDefault() {
    return QStringLiteral("#d9dde2");
}

// In the order of MaterialColours.
QStringList materialColours() {
    return {QStringLiteral("srgb"), QStringLiteral("linear"), QStringLiteral("none")};
}

/// Reads the values of options and keeps the first error.
class OptionReader {
public:
    OptionReader(const QCommandLineParser& parser, QString& error) : _parser(parser), _error(error) {}

    double number(const QString& name, double low, double high) {
        bool isNumber = false;
        const double value = _parser.value(name).toDouble(&isNumber);
        if (!isNumber || !(value >= low && value <= high))
            complain(name, QStringLiteral("a number from %1 to %2").arg(low).arg(high));
        return value;
    }

    int count(const QString& name, int high) {
        bool isNumber = false;
        const int value = _parser.value(name).toInt(&isNumber);
        if (!isNumber || value < 1 || value > high)
            complain(name, QStringLiteral("a whole number from 1 to %1").arg(high));
        return value;
    }

    QSize resolution(const QString& name) {
        const QStringList parts = _parser.value(name).split(QRegularExpression(QStringLiteral("[,x]")));
        bool areNumbers[2] = {false, false};
        QSize size;
        if (parts.size() == 2)
            size = QSize(parts[0].toInt(&areNumbers[0]), parts[1].toInt(&areNumbers[1]));
        const bool fits =
            size.width() >= 1 && size.height() >= 1 && size.width() <= kMaxSide && size.height() <= kMaxSide;
        if (!areNumbers[0] || !areNumbers[1] || !fits)
            complain(name, QStringLiteral("two whole numbers from 1 to %1, as in 1280x720").arg(kMaxSide));
        return size;
    }

    QColor colour(const QString& name) {
        const QString text = _parser.value(name);
        QColor value = text.contains(QLatin1Char(',')) ? fromComponents(text) : QColor(text);
        if (!value.isValid())
            complain(name, QStringLiteral("a colour such as white, #20242a or 0.1,0.2,0.3"));
        return value;
    }

    QString upDirection(const QString& name) {
        const QString value = _parser.value(name).toUpper();
        QString direction = value.size() == 1 ? QLatin1Char('+') + value : value;
        if (!upDirections().contains(direction))
            complain(name, upDirections().join(QStringLiteral(", ")));
        return direction;
    }

    /// Returns: the position of the value in `names`; 0 if it is not there.
    int choice(const QString& name, const QStringList& names) {
        const int position = names.indexOf(_parser.value(name).toLower());
        if (position < 0)
            complain(name, names.join(QStringLiteral(", ")));
        return std::max(0, position);
    }

    void complain(const QString& name, const QString& expected) {
        if (_error.isNull())
            _error = QStringLiteral("--%1 takes %2, not '%3'.").arg(name, expected, _parser.value(name));
    }

private:
    static QColor fromComponents(const QString& text) {
        double values[3] = {};
        const QStringList parts = text.split(QLatin1Char(','));
        if (parts.size() != 3)
            return {};
        for (int n = 0; n < 3; ++n) {
            bool isNumber = false;
            values[n] = parts[n].toDouble(&isNumber);
            if (!isNumber || !(values[n] >= 0 && values[n] <= 1))
                return {};
        }
        return QColor::fromRgbF(values[0], values[1], values[2]);
    }

    const QCommandLineParser& _parser;
    QString& _error;
};

// The angles of a view are replaced by those that are given.
void readCamera(const QCommandLineParser& parser, OptionReader& reader, CameraOptions& camera) {
    camera.up = reader.upDirection(QStringLiteral("up"));
    const bool hasView = parser.isSet(QStringLiteral("view"));
    if (hasView)
        turnTo(viewNames().at(reader.choice(QStringLiteral("view"), viewNames())), camera);
    if (!hasView || parser.isSet(QStringLiteral("camera-azimuth")))
        camera.azimuth = reader.number(QStringLiteral("camera-azimuth"), -36000, 36000);
    if (!hasView || parser.isSet(QStringLiteral("camera-elevation")))
        camera.elevation = reader.number(QStringLiteral("camera-elevation"), -90, 90);
    camera.zoom = reader.number(QStringLiteral("camera-zoom"), 0.001, 1000);
    if (parser.isSet(QStringLiteral("orthographic")))
        camera.projection = Projection::Orthographic;
}

QString findMistake(const RenderOptions& options, const QStringList& files) {
    if (files.size() != 1)
        return QStringLiteral("Exactly one file is required; %1 are given.").arg(files.size());
    if (options.output.isEmpty())
        return QStringLiteral("--output is missing.");
    if (!canWritePicture(options.output))
        return QStringLiteral("--output: '%1' does not end in an image format that can be written.")
            .arg(options.output);
    if (options.turntable > 0 && options.output == QLatin1String("-"))
        return QStringLiteral("--turntable makes several pictures, which cannot all go to standard output.");
    return {};
}

} // namespace

void addRenderOptions(QCommandLineParser& parser) {
    const CameraOptions camera;
    parser.addOptions({
        {{"o", "output"}, "The picture to write; - is standard output, as PNG.", "file"},
        {"resolution", "Size in pixels (default 1280x720).", "WxH", "1280x720"},
        {"background",
         QStringLiteral("Name, #rrggbb or three numbers from 0 to 1 (default %1).").arg(backgroundDefault()),
         "colour", backgroundDefault()},
        {"no-background", "Leave the background transparent."},
        {"up",
         QStringLiteral("Up direction: %1 (default +Y).").arg(upDirections().join(QStringLiteral(", "))),
         "axis", camera.up},
        {"view", QStringLiteral("The view: %1.").arg(viewNames().join(QStringLiteral(", "))), "name"},
        {"orthographic", "Draw without perspective."},
        {"camera-azimuth", "Angle around the model, from the front to the right (default 30).", "degrees",
         QString::number(camera.azimuth)},
        {"camera-elevation", "Angle above the horizon (default 20).", "degrees",
         QString::number(camera.elevation)},
        {"camera-zoom", "Magnification; at 1 the model fills the picture.", "factor",
         QString::number(camera.zoom)},
        {"part", "Show only this part, named by an 'o' or 'g' line; may be given several times.", "name"},
        {"mtl-colours",
         QStringLiteral(
             "How to read the colours of materials and vertices: %1 (default srgb). With none, all "
             "surfaces are light grey.")
             .arg(materialColours().join(QStringLiteral(", "))),
         "encoding", materialColours().constFirst()},
        {"exposure", "Brightness; each 1 doubles the light (default 0).", "stops", "0"},
        {"ambient-occlusion", "Darken corners and gaps, which less light reaches."},
        {"wireframe", "Draw the edges of the triangles."},
        {"turntable",
         "Write N pictures from all around the model; picture.png becomes picture-000.png and so on.", "N"},
    });
}

std::optional<RenderOptions> readRenderOptions(const QCommandLineParser& parser, QString& error) {
    error = QString();
    OptionReader reader(parser, error);
    RenderOptions options;
    options.output = parser.value(QStringLiteral("output"));
    options.resolution = reader.resolution(QStringLiteral("resolution"));
    if (!parser.isSet(QStringLiteral("no-background")))
        options.background = reader.colour(QStringLiteral("background"));
    readCamera(parser, reader, options.camera);
    options.parts = parser.values(QStringLiteral("part"));
    options.colours = MaterialColours(reader.choice(QStringLiteral("mtl-colours"), materialColours()));
    options.exposure = reader.number(QStringLiteral("exposure"), -kMaxExposure, kMaxExposure);
    options.ambientOcclusion = parser.isSet(QStringLiteral("ambient-occlusion"));
    options.wireframe = parser.isSet(QStringLiteral("wireframe"));
    if (parser.isSet(QStringLiteral("turntable")))
        options.turntable = reader.count(QStringLiteral("turntable"), kMaxFrames);
    if (error.isNull())
        error = findMistake(options, parser.positionalArguments());
    if (!error.isNull())
        return std::nullopt;
    options.file = parser.positionalArguments().constFirst();
    return options;
}

} // namespace Atelier::Vel::Tool
