#include <velgl/idpass.h>

#include <algorithm>
#include <cstring>

#include <velgl/autobinder.h>
#include <velgl/framebuffer.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>
#include <velgl/program.h>
#include <velgl/shaderinterface.h>

namespace Atelier::Vel {

namespace {

const char kVersion[] = "#version 430 core\n";

// %1 is the matrix that places the positions.
const char kVertexShader[] = R"(
in vec3 velgl_position;
uniform mat4 velgl_view;
uniform int velgl_drawable;
flat out ivec3 numbers;
void main() {
    int command = velglCommand();
    numbers = ivec3(velgl_drawable, command, gl_InstanceID);
    gl_Position = velgl_view * %1 * vec4(velgl_position, 1.0);
}
)";

// 0 is for pixels that show nothing.
const char kFragmentShader[] = R"(
flat in ivec3 numbers;
out ivec4 pixel;
void main() {
    pixel = ivec4(numbers + 1, floatBitsToInt(gl_FragCoord.z));
}
)";

// Returns: why the positions cannot be placed; null if they can.
QString fault(const IdPass::Options& options) {
    if (options.radius < 0 || options.radius > IdPass::kMaxRadius)
        return QStringLiteral("The radius %1 is not from 0 to %2")
            .arg(options.radius)
            .arg(IdPass::kMaxRadius);
    if (options.instances.isEmpty())
        return {};
    const InstanceDataPlan* plan = InstanceDataRegistry::Instance().plan(options.instances);
    if (!plan)
        return QStringLiteral("The plan '%1' is not registered").arg(options.instances);
    const QVector<InstanceDataPlan::Member>& members = plan->members();
    const bool hasMember = std::any_of(members.cbegin(), members.cend(), [&](const auto& member) {
        return member.name == options.placement && member.type == InstanceDataPlan::DataType::Mat4;
    });
    return hasMember
               ? QString()
               : QStringLiteral("The plan '%1' has no matrix '%2'").arg(options.instances, options.placement);
}

QByteArray vertexShader(const IdPass::Options& options) {
    const QString placement = options.instances.isEmpty()
                                  ? QStringLiteral("mat4(1.0)")
                                  : QStringLiteral("velglInstance(velglInstanceNumber()).") +
                                        InstanceDataPlan::glslName(options.placement);
    return kVersion + shaderInterface(ShaderStage::Vertex, {{}, options.instances}) +
           QString::fromLatin1(kVertexShader).arg(placement).toLatin1();
}

std::unique_ptr<Program> makeProgram(const IdPass::Options& options, QString& error) {
    ProgramOptions programOptions;
    programOptions.streams.insert(QStringLiteral("velgl_position"), options.positions);
    auto program = Program::fromSource(vertexShader(options), QByteArray(kVersion) + kFragmentShader,
                                       programOptions, error);
    if (program)
        program->setLabel(QStringLiteral("VelGL's numbers of commands"));
    return program;
}

// Shows the square of `side` pixels around a pixel, instead of all of the view. `pixel` is counted from the
// lower left.
QMatrix4x4 squareAround(QPoint pixel, int side, QSize view) {
    const double x = (2.0 * pixel.x() + 1) / view.width() - 1;
    const double y = (2.0 * pixel.y() + 1) / view.height() - 1;
    QMatrix4x4 matrix;
    matrix.scale(float(double(view.width()) / side), float(double(view.height()) / side));
    matrix.translate(float(-x), float(-y));
    return matrix;
}

int squaredLength(QPoint vector) {
    return QPoint::dotProduct(vector, vector);
}

IdPass::Hit hitAt(const qint32* pixel, QPoint place) {
    IdPass::Hit hit;
    hit.drawable = pixel[0] - 1;
    hit.command = pixel[1] - 1;
    hit.instance = pixel[2] - 1;
    hit.pixel = place;
    std::memcpy(&hit.depth, &pixel[3], sizeof hit.depth);
    return hit;
}

// `pixels` are those of a square whose upper left pixel is `corner`.
IdPass::Hit nearestHit(const QVector<qint32>& pixels, int side, QPoint corner, const QRect& view,
                       QPoint cursor) {
    IdPass::Hit nearest;
    for (int index = 0; index < side * side; ++index) {
        const IdPass::Hit hit = hitAt(&pixels[index * 4], corner + QPoint(index % side, index / side));
        if (!hit.isValid() || !view.contains(hit.pixel))
            continue;
        const int distance = squaredLength(hit.pixel - cursor);
        const int least = squaredLength(nearest.pixel - cursor);
        if (!nearest.isValid() || distance < least || (distance == least && hit.depth < nearest.depth))
            nearest = hit;
    }
    return nearest;
}

} // namespace

struct IdPass::Data {
    RenderState state;
    int radius = 0;
    std::unique_ptr<Program> program;
    std::unique_ptr<Framebuffer> pixels;
};

IdPass::IdPass() : _data(std::make_unique<Data>()) {}

IdPass::~IdPass() = default;

std::unique_ptr<IdPass> IdPass::create(const Options& options, QString& error) {
    const QString cause = fault(options);
    if (!cause.isNull()) {
        error = cause;
        return nullptr;
    }
    std::unique_ptr<IdPass> pass(new IdPass);
    const int side = 2 * options.radius + 1;
    pass->_data->radius = options.radius;
    pass->_data->state.sides = options.sides;
    pass->_data->pixels = Framebuffer::create({{side, side}, 0, {Framebuffer::Color::RGBA32I}}, error);
    if (pass->_data->pixels)
        pass->_data->program = makeProgram(options, error);
    return pass->_data->program ? std::move(pass) : nullptr;
}

IdPass::Hit IdPass::pick(GPUModel& model, const View& view, QPoint cursor, QString& error,
                         const DrawFilter& filter) {
    const QRect viewport(QPoint(0, 0), view.size);
    const int radius = _data->radius;
    if (view.size.isEmpty() || !viewport.adjusted(-radius, -radius, radius, radius).contains(cursor))
        return {};
    Framebuffer& pixels = *_data->pixels;
    const int side = pixels.size().width();
    if (pixels.clear()) {
        const QPoint fromBelow(cursor.x(), view.size.height() - 1 - cursor.y());
        _data->program->setUniform("velgl_view", squareAround(fromBelow, side, view.size) * view.matrix);
        const AutoBinder target(&pixels);
        const ScopedRenderState state(_data->state);
        DrawOptions options;
        options.program = _data->program.get();
        options.filter = filter;
        model.draw(options);
    }
    const QVector<qint32> numbers = pixels.readIntegers(error);
    return numbers.isEmpty() ? Hit()
                             : nearestHit(numbers, side, cursor - QPoint(radius, radius), viewport, cursor);
}

} // namespace Atelier::Vel
