#include "windows/windowsfixture.h"

#include <cstdlib>

#include <QtCore/QFile>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QVBoxLayout>

#include <velgl/texturemanager.h>
#include <velmodel/modelbuilder.h>
#include <velmodel/objloader.h>

#include "windows/buffercontents.h"

namespace Atelier::Vel::Testing {

namespace {

constexpr unsigned int kFloat = 0x1406; // GL_FLOAT
const QColor kSolidColor(200, 100, 50);

const Cell kPictureQuarters{Qt::red, Qt::blue, Qt::yellow, Qt::cyan};

constexpr char kMaterials[] = "newmtl green\nKd 0 1 0\n"
                              "newmtl picture\nKd 1 1 1\nmap_Kd picture.png\n"
                              "newmtl solid\nKd 0.784314 0.392157 0.196078\n";

// The last face has the default material.
constexpr char kFaces[] = "usemtl green\nf 1/1 2/2 7/3 6/4\nusemtl picture\nf 2/1 3/2 8/3 7/4\n"
                          "usemtl solid\nf 3/1 4/2 9/3 8/4\nusemtl <default>\nf 4/1 5/2 10/3 9/4\n";

// Two rows of five positions, from bottom left to top right.
constexpr float kPositions[] = {-1, -1, 0, -0.5F, -1, 0, 0, -1, 0, 0.5F, -1, 0, 1, -1, 0,
                                -1, 1,  0, -0.5F, 1,  0, 0, 1,  0, 0.5F, 1,  0, 1, 1,  0};
constexpr float kTexCoords[] = {0, 0, 1, 0, 1, 1, 0, 1};

QByteArray values(const char* keyword, const float* numbers, int count, int components) {
    QByteArray text;
    for (int i = 0; i < count; i += components) {
        text += keyword;
        for (int component = 0; component < components; ++component)
            text += ' ' + QByteArray::number(double(numbers[i + component]));
        text += '\n';
    }
    return text;
}

void write(const QString& path, const QByteArray& text) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
}

InstanceData colored(const QColor& color) {
    const float diffuse[] = {float(color.redF()), float(color.greenF()), float(color.blueF())};
    InstanceData material("OBJMaterial");
    material.set("Kd", diffuse, sizeof diffuse);
    return material;
}

template<typename Source>
InstanceData textured(Source texture) {
    InstanceData material = colored(Qt::white);
    material.setTexture("map_Kd", texture);
    return material;
}

void addMaterials(ModelBuilder& builder, const QVector<InstanceData>& materials) {
    for (int i = 0; i < materials.size(); ++i) {
        const QString name = QString::number(i);
        const auto face = static_cast<unsigned int>(i);
        builder.createMaterialGroup(name, materials[i], i, 0);
        builder.addFacesToMaterialGroup(name, 1, &face, QString());
    }
}

} // namespace

bool Cell::looksLike(const Cell& other) const {
    const auto alike = [](const QColor& a, const QColor& b) {
        return std::abs(a.red() - b.red()) <= 1 && std::abs(a.green() - b.green()) <= 1 &&
               std::abs(a.blue() - b.blue()) <= 1;
    };
    return alike(topLeft, other.topLeft) && alike(topRight, other.topRight) &&
           alike(bottomLeft, other.bottomLeft) && alike(bottomRight, other.bottomRight);
}

void PrintTo(const Cell& cell, std::ostream* out) {
    for (const QColor& color : {cell.topLeft, cell.topRight, cell.bottomLeft, cell.bottomRight})
        *out << color.name().toStdString() << ' ';
}

QVector<Cell> cellsOf(const QImage& picture) {
    EXPECT_EQ(picture.size(), kPictureSize);
    constexpr int kFirst = kCellSide / 4;
    constexpr int kSecond = kCellSide - kFirst;
    QVector<Cell> cells;
    for (int left = 0; left < picture.width(); left += kCellSide)
        cells.append({picture.pixelColor(left + kFirst, kFirst), picture.pixelColor(left + kSecond, kFirst),
                      picture.pixelColor(left + kFirst, kSecond),
                      picture.pixelColor(left + kSecond, kSecond)});
    return cells;
}

QVector<Cell> cellsOf(WidgetCanvas& canvas) {
    return cellsOf(canvas.picture());
}

Frame::Frame() {
    new QVBoxLayout(this);
    layout()->setContentsMargins({});
}

CanvasFrame::CanvasFrame(GPUModel* model) : _canvas(new WidgetCanvas(this)) {
    _canvas->showModel(model);
    dock(*_canvas);
}

void Frame::dock(WidgetCanvas& canvas) {
    canvas.setFixedSize(kPictureSize);
    layout()->addWidget(&canvas);
    show();
    canvas.show();
    canvas.waitForFrame();
}

QImage Frame::onScreen() const {
    return windowHandle()->screen()->grabWindow(winId()).toImage();
}

void WindowsTest::SetUp() {
    writePicture(kPictureSide);
    write(_folder.filePath("scene.mtl"), kMaterials);
    write(objFile(),
          "mtllib scene.mtl\n" + values("v", kPositions, 30, 3) + values("vt", kTexCoords, 8, 2) + kFaces);
}

void WindowsTest::TearDown() {
    EXPECT_THAT(takeWarnings(), ::testing::IsEmpty());
}

std::vector<QString> WindowsTest::takeWarnings() {
    std::vector<QString> warnings = _log.texts(QtWarningMsg);
    for (const QtMsgType worse : {QtCriticalMsg, QtFatalMsg})
        for (const QString& text : _log.texts(worse))
            warnings.push_back(text);
    _log.clear();
    return warnings;
}

void WindowsTest::writePicture(int side) const {
    QImage image(side, side, QImage::Format_RGB32);
    QPainter painter(&image);
    const int half = side / 2;
    painter.fillRect(0, 0, half, half, kPictureQuarters.topLeft);
    painter.fillRect(half, 0, half, half, kPictureQuarters.topRight);
    painter.fillRect(0, half, half, half, kPictureQuarters.bottomLeft);
    painter.fillRect(half, half, half, half, kPictureQuarters.bottomRight);
    ASSERT_TRUE(image.save(picture()));
}

std::unique_ptr<GPUModel> WindowsTest::loadedModel() const {
    QString error;
    std::unique_ptr<GPUModel> model(loadModelFromOBJFile(objFile(), error));
    EXPECT_TRUE(model) << error.toStdString();
    EXPECT_TRUE(model && model->drawableCount() == 1);
    return model;
}

std::unique_ptr<GPUModel> WindowsTest::uploadedModel() const {
    return uploadedModel({makeIdentityInstance()});
}

std::unique_ptr<GPUModel> WindowsTest::uploadedModel(const UploadOptions& options) const {
    auto model = std::make_unique<GPUModel>();
    EXPECT_TRUE(upload(drawData(), *model, options));
    return model;
}

DrawData WindowsTest::drawData() const {
    const unsigned int corners[] = {0, 1, 6, 5, 1, 2, 7, 6, 2, 3, 8, 7, 3, 4, 9, 8};
    const unsigned int texCoordCorners[] = {0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3};
    const unsigned int cornersPerFace[] = {4, 4, 4, 4};
    ModelBuilder builder;
    builder.createVertexAttribute("va_Vertex", 3, kFloat, 0, 0);
    builder.addValuesToVertexAttribute("va_Vertex", 30, kPositions, kFloat);
    builder.addIndicesToVertexAttribute("va_Vertex", 16, corners);
    builder.createVertexAttribute("va_TexCoord", 2, kFloat, 0, 0);
    builder.addValuesToVertexAttribute("va_TexCoord", 8, kTexCoords, kFloat);
    builder.addIndicesToVertexAttribute("va_TexCoord", 16, texCoordCorners);
    builder.addVertexCountsToFaces(kCells, cornersPerFace);
    addMaterials(builder,
                 {colored(Qt::green), textured(picture()),
                  textured(TextureManager::Instance().colorTexture(kSolidColor)), makeDefaultMaterial()});
    return builder.prepare("va_Vertex");
}

std::unique_ptr<GPUModel> WindowsTest::restorableModel(Restoring restoring) const {
    if (restoring == Restoring::KeptData)
        return uploadedModel(keptData());
    std::unique_ptr<GPUModel> model = uploadedModel();
    const BufferContents contents(*model);
    model->setRefill([contents](GPUModel& lost) { return contents.restore(lost); });
    return model;
}

UploadOptions WindowsTest::keptData() {
    UploadOptions options{makeIdentityInstance()};
    options.keepData = true;
    return options;
}

QVector<Cell> WindowsTest::scene() {
    QVector<Cell> cells = sceneWithoutPicture();
    cells[1] = kPictureQuarters;
    return cells;
}

QVector<Cell> WindowsTest::sceneWithoutPicture() {
    // The default material is grey.
    return {Cell::plain(Qt::green), Cell::plain(Qt::white), Cell::plain(kSolidColor),
            Cell::plain(QColor::fromRgbF(0.7, 0.7, 0.7))};
}

} // namespace Atelier::Vel::Testing
