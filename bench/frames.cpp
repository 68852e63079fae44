// Measures the processor time that GPUModel::draw() takes for a frame, beside a loop that issues the same
// draws with OpenGL alone. See docs/performance.md for the method.

#include <epoxy/gl.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <numeric>
#include <vector>

#include <velgl/drawelementsindirectcommand.h>
#include <velgl/instancedatacollection.h>
#include <velgl/opengldevicecontext.h>
#include <velgl/shaderinterface.h>

#include "framescene.h"
#include "measure.h"

namespace Atelier::Vel::Bench {

namespace {

using Command = DrawElementsIndirectCommand;

constexpr FrameCase kCases[] = {{"1 material, 1 command", 1, 1},
                                {"1,000 textures in a row, 1,000 commands", 1000, 1000},
                                {"1,000 textures in turn, 10,000 commands", 10000, 1000}};
constexpr int kPictureSide = 100; // a pixel for each of 10,000 commands
constexpr int kWarmUpFrames = 20;
constexpr int kDefaultFrames = 100;
// A frame of one command takes microseconds, so many are needed to see the machine at all its speeds.
constexpr int kSmallFrameFactor = 100;

GLuint rawBuffer(GLenum target, const void* data, std::size_t bytes) {
    GLuint name = 0;
    glGenBuffers(1, &name);
    glBindBuffer(target, name);
    glBufferData(target, GLsizeiptr(bytes), data, GL_STATIC_DRAW);
    return name;
}

GLuint rawVertexArray(const Program& program) {
    GLuint name = 0;
    glGenVertexArrays(1, &name);
    glBindVertexArray(name);
    rawBuffer(GL_ARRAY_BUFFER, kFrameTriangle, sizeof kFrameTriangle);
    rawBuffer(GL_ELEMENT_ARRAY_BUFFER, kFrameIndices, sizeof kFrameIndices);
    const auto position = GLuint(glGetAttribLocation(program.name(), "va_Vertex"));
    glEnableVertexAttribArray(position);
    glVertexAttribPointer(position, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
    return name;
}

// The draws of a scene in one order, with OpenGL alone. The context deletes the GL objects.
class BareLoop {
public:
    BareLoop(const FrameScene& scene, const FrameCase& measured, DrawOrder order);
    void draw() const;

private:
    struct Run {
        GLuint texture;
        int first; // command in the indirect buffer
        int count;
    };

    bool _isSorted;
    GLuint _program;
    GLuint _vertexArray;
    GLuint _materials;
    GLuint _instances;
    GLuint _commands;
    GLint _firstCommand; // location, as those below
    GLint _textures;
    std::vector<Run> _runs;
};

BareLoop::BareLoop(const FrameScene& scene, const FrameCase& measured, DrawOrder order)
    : _isSorted(order == DrawOrder::ByTextures && measured.textures > 1),
      _program(scene.program->name()),
      _vertexArray(rawVertexArray(*scene.program)),
      _firstCommand(scene.program->uniformLocation("velgl_firstCommand")),
      _textures(scene.program->uniformLocation("velgl_textures")) {
    const QByteArray materials = scene.model.materials(0)->packed();
    const QByteArray instances = scene.model.instances(0)->packed();
    _materials = rawBuffer(GL_SHADER_STORAGE_BUFFER, materials.constData(), std::size_t(materials.size()));
    _instances = rawBuffer(GL_SHADER_STORAGE_BUFFER, instances.constData(), std::size_t(instances.size()));
    std::vector<unsigned int> numbers(std::size_t(measured.commands));
    std::iota(numbers.begin(), numbers.end(), 0U);
    const auto textureOf = [&](unsigned int number) { return number % unsigned(measured.textures); };
    if (_isSorted)
        std::stable_sort(numbers.begin(), numbers.end(),
                         [&](unsigned int a, unsigned int b) { return textureOf(a) < textureOf(b); });
    std::vector<Command> commands;
    for (const unsigned int number : numbers) {
        const GLuint texture = scene.textures[textureOf(number)]->name();
        if (_runs.empty() || _runs.back().texture != texture)
            _runs.push_back({texture, int(commands.size()), 0});
        ++_runs.back().count;
        commands.push_back({3, 1, 0, 0, _isSorted ? number : 0});
    }
    _commands = rawBuffer(GL_DRAW_INDIRECT_BUFFER, commands.data(), commands.size() * sizeof(Command));
}

void BareLoop::draw() const {
    glUseProgram(_program);
    glBindVertexArray(_vertexArray);
    glBindBufferBase(GL_SHADER_STORAGE_BUFFER, kMaterialsBinding, _materials);
    glBindBufferBase(GL_SHADER_STORAGE_BUFFER, kInstancesBinding, _instances);
    glBindBuffer(GL_DRAW_INDIRECT_BUFFER, _commands);
    glUniform1i(_textures, 1);
    if (_isSorted)
        glUniform1i(_firstCommand, -1);
    for (const Run& run : _runs) {
        glBindTextures(0, 1, &run.texture);
        if (!_isSorted)
            glUniform1i(_firstCommand, run.first);
        const auto offset = std::uintptr_t(run.first) * sizeof(Command);
        // NOLINTNEXTLINE(performance-no-int-to-ptr): an offset into the bound buffer, as OpenGL takes it
        glMultiDrawElementsIndirect(GL_TRIANGLES, GL_UNSIGNED_SHORT, reinterpret_cast<const void*>(offset),
                                    run.count, 0);
    }
}

void makePicture() {
    GLuint names[2] = {};
    glGenFramebuffers(1, &names[0]);
    glGenRenderbuffers(1, &names[1]);
    glBindFramebuffer(GL_FRAMEBUFFER, names[0]);
    glBindRenderbuffer(GL_RENDERBUFFER, names[1]);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, kPictureSide, kPictureSide);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, names[1]);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
        failFrames("no framebuffer");
}

using Draw = std::function<void()>;

// Every command has painted its own pixel with its texture and its material.
bool isPictureRight(const FrameCase& measured, const Draw& draw) {
    const int side = measured.side();
    glViewport(0, 0, side, side);
    glClear(GL_COLOR_BUFFER_BIT);
    draw();
    std::vector<FramePixel> pixels(std::size_t(side) * std::size_t(side));
    glReadPixels(0, 0, side, side, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    for (int command = 0; command < measured.commands; ++command)
        if (!(pixels[std::size_t(command)] == paintedPixel(command, command % measured.textures)))
            return false;
    return glGetError() == GL_NO_ERROR;
}

double threadMicroseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e6 + double(now.tv_nsec) * 1e-3;
}

// The driver is idle before and after it; what it does in glFinish() does not count.
double frameMicroseconds(const Draw& draw) {
    const double start = threadMicroseconds();
    draw();
    const double time = threadMicroseconds() - start;
    glFinish();
    return time;
}

// The processor time of an empty frame, which is that of reading the clock.
double clockMicroseconds() {
    std::vector<double> times(1000);
    for (double& time : times)
        time = frameMicroseconds([] {});
    return spreadOf(times).median;
}

struct Figures {
    double draw = 0;  // microseconds
    double bare = 0;  // microseconds
    double ratio = 0; // the median of the frames' ratios, from which the machine's speed cancels
};

Figures measuredFrames(int frames, const Draw& draw, const Draw& bare) {
    const double clock = clockMicroseconds();
    std::vector<double> draws;
    std::vector<double> bares;
    std::vector<double> ratios;
    for (int frame = -kWarmUpFrames; frame < frames; ++frame) {
        // Each is first in every other frame, in case the second profits from the first.
        const bool isDrawFirst = frame % 2 == 0;
        const double first = frameMicroseconds(isDrawFirst ? draw : bare) - clock;
        const double second = frameMicroseconds(isDrawFirst ? bare : draw) - clock;
        if (frame < 0)
            continue;
        draws.push_back(isDrawFirst ? first : second);
        bares.push_back(isDrawFirst ? second : first);
        ratios.push_back(draws.back() / bares.back());
    }
    return {spreadOf(draws).median, spreadOf(bares).median, spreadOf(ratios).median};
}

void measureDraw(FrameScene& scene, const FrameCase& measured, const DrawOptions& options, int frames) {
    const BareLoop loop(scene, measured, options.order);
    const Draw draw = [&] { scene.model.draw(options); };
    const Draw bare = [&] { loop.draw(); };
    if (!isPictureRight(measured, draw))
        failFrames("the model's picture is wrong");
    if (!isPictureRight(measured, bare))
        failFrames("the bare loop's picture is wrong");
    glViewport(0, 0, 1, 1);
    const Figures figures =
        measuredFrames(measured.commands == 1 ? frames * kSmallFrameFactor : frames, draw, bare);
    if (glGetError() != GL_NO_ERROR)
        failFrames("OpenGL reports an error");
    std::printf("%-40s %-14s %-10s %10.1f %10.1f %6.2f\n", measured.name,
                options.state == StatePolicy::Restored ? "Restored" : "ClientRestores",
                options.order == DrawOrder::AsGiven ? "AsGiven" : "ByTextures", figures.draw, figures.bare,
                figures.ratio);
    std::fflush(stdout);
}

void measureCase(const FrameCase& measured, int frames) {
    FrameScene scene(measured);
    for (const DrawOrder order : {DrawOrder::AsGiven, DrawOrder::ByTextures})
        for (const StatePolicy policy : {StatePolicy::Restored, StatePolicy::ClientRestores}) {
            DrawOptions options;
            options.state = policy;
            options.order = order;
            options.program = scene.program.get();
            measureDraw(scene, measured, options, frames);
        }
    glUseProgram(0); // one that is deleted while it is current cannot be made current again
}

int framesOf(int count, char** arguments) {
    const int frames = count == 2 ? std::atoi(arguments[1]) : kDefaultFrames;
    if (count > 2 || frames < 1)
        failFrames("usage: velmodel_frames [FRAMES]");
    return frames;
}

void measureAll(int frames) {
    QString error;
    const auto context = OpenGLDeviceContext::createHeadless({}, error);
    if (!context || !context->makeCurrent())
        failFrames(qPrintable(error));
    registerFramePlans();
    makePicture();
    std::printf("%s\nMicroseconds of processor time, medians of %d frames (%d times as many of 1 command)\n",
                qPrintable(context->description()), frames, kSmallFrameFactor);
    std::printf("%-40s %-14s %-10s %10s %10s %6s\n", "case", "policy", "order", "draw()", "bare loop",
                "ratio");
    for (const FrameCase& measured : kCases)
        measureCase(measured, frames);
}

} // namespace

} // namespace Atelier::Vel::Bench

int main(int count, char** arguments) {
    using namespace Atelier::Vel::Bench;
    measureAll(framesOf(count, arguments));
    return 0;
}
