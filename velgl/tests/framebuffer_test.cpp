#include <epoxy/gl.h>

#include <velgl/framebuffer.h>

#include <functional>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>

#include "clientstate.h"
#include "framebufferfixture.h"
#include "glfaults.h"
#include "glhooks.h"

namespace Atelier::Vel::Testing {

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Not;

class FramebufferTest : public FramebufferFixture {
protected:
    std::string refused(const Picture::Options& options) {
        QString error;
        EXPECT_FALSE(Picture::create(options, error));
        return error.toStdString();
    }
};

} // namespace

INSTANTIATE_FOR_DRIVERS(FramebufferTest);

TEST_P(FramebufferTest, KeepsWhatItWasMadeWith) {
    const auto picture = made({_size, 0, {Color::R16F, Color::RGBA8}, Depth::None});
    EXPECT_EQ(picture->size(), _size);
    EXPECT_EQ(picture->samples(), 0);
    EXPECT_THAT(picture->options().colors, ElementsAre(Color::R16F, Color::RGBA8));
    EXPECT_TRUE(glIsFramebuffer(picture->name()));
    EXPECT_TRUE(glIsTexture(picture->colorTexture(0)));
    EXPECT_NE(picture->colorTexture(0), picture->colorTexture(1));
    EXPECT_EQ(picture->colorTexture(2), 0U);
    EXPECT_EQ(picture->colorTexture(-1), 0U);
}

TEST_P(FramebufferTest, ClearedPictureHasOneColor) {
    const auto picture = made({_size});
    ASSERT_TRUE(picture->clear(QColor(10, 20, 30, 40)));
    const QImage image = picture->toImage(_error);
    ASSERT_EQ(image.size(), _size);
    EXPECT_EQ(image.format(), QImage::Format_RGBA8888);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            ASSERT_EQ(image.pixel(x, y), qRgba(10, 20, 30, 40));
    EXPECT_THAT(picture->readDepths(_error), Each(1.0F));
    EXPECT_EQ(picture->readDepths(_error).size(), kWidth * kHeight);
}

TEST_P(FramebufferTest, ClearSetsFloatsToTheColorAndIntegersToZero) {
    for (const int samples : {0, 2}) {
        for (const Color color : {Color::RGBA8, Color::R16F, Color::RGBA16F, Color::R32F, Color::RGBA32F}) {
            const auto picture = made({_size, samples, {Color::RGBA8, color}});
            ASSERT_TRUE(picture->clear(Qt::white));
            EXPECT_THAT(picture->readFloats(_error, 1), testing::AllOf(Each(1.0F), Not(testing::IsEmpty())));
        }
        for (const Color color : {Color::R32I, Color::RGBA32I}) {
            const auto picture = made({_size, samples, {color, Color::RGBA8}});
            ASSERT_TRUE(picture->clear(Qt::white));
            EXPECT_THAT(picture->readIntegers(_error), testing::AllOf(Each(0), Not(testing::IsEmpty())));
            EXPECT_EQ(picture->toImage(_error, 1).pixel(0, 0), 0xFFFFFFFF);
        }
        for (const Color color : {Color::R32UI, Color::RGBA32UI}) {
            const auto picture = made({_size, samples, {color}, Depth::None});
            ASSERT_TRUE(picture->clear(Qt::white));
            EXPECT_THAT(picture->readUnsignedIntegers(_error),
                        testing::AllOf(Each(0U), Not(testing::IsEmpty())));
        }
    }
}

TEST_P(FramebufferTest, OnlyTheDrawnColorsAreWritten) {
    const auto picture = made({_size, 0, {Color::RGBA8, Color::RGBA8}, Depth::None});
    const auto program = painter("layout(location = 0) out vec4 first;\n"
                                 "layout(location = 1) out vec4 second;\n"
                                 "void main() { first = vec4(1.0); second = vec4(1.0); }\n");
    const auto written = [&](int color) { return picture->toImage(_error, color).pixel(0, 0) == 0xFFFFFFFF; };
    for (const QVector<int>& colors :
         {QVector<int>{0}, QVector<int>{1}, QVector<int>{0, 1}, QVector<int>{}, QVector<int>{-1, 1, 2, 8}}) {
        picture->setDrawnColors(colors);
        picture->clear(Qt::black); // all colours, not only those that are drawn
        EXPECT_FALSE(written(0) || written(1));
        picture->paint(*program, {}, _error);
        EXPECT_EQ(written(0), colors.contains(0));
        EXPECT_EQ(written(1), colors.contains(1));
    }
}

TEST_P(FramebufferTest, ChangeOfTheDrawnColorsReachesABoundFramebuffer) {
    const auto picture = made({_size, 0, {Color::RGBA8, Color::RGBA8}, Depth::None});
    const AutoBinder binder(picture.get());
    picture->setDrawnColors({1});
    GLint buffers[2] = {};
    glGetIntegerv(GL_DRAW_BUFFER0, &buffers[0]);
    glGetIntegerv(GL_DRAW_BUFFER1, &buffers[1]);
    EXPECT_THAT(buffers, ElementsAre(GL_NONE, GL_COLOR_ATTACHMENT1));
}

TEST_P(FramebufferTest, BindSetsTheViewportAndUnbindRestoresIt) {
    const auto outer = made({{7, 9}});
    const auto inner = made({_size});
    const BusyPainter painter;
    const ClientState before = ClientState::captured();
    const auto expectBound = [](const Picture& picture) {
        GLint box[4] = {};
        GLint names[2] = {};
        glGetIntegerv(GL_VIEWPORT, box);
        glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &names[0]);
        glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &names[1]);
        EXPECT_THAT(box, ElementsAre(0, 0, picture.size().width(), picture.size().height()));
        EXPECT_THAT(names, Each(GLint(picture.name())));
    };
    ASSERT_TRUE(outer->bind());
    expectBound(*outer);
    ASSERT_TRUE(inner->bind());
    ASSERT_TRUE(inner->bind());
    inner->unbind();
    expectBound(*inner);
    inner->unbind();
    expectBound(*outer);
    outer->unbind();
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
    outer->unbind(); // one more than bind()
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
}

TEST_P(FramebufferTest, ModelIsDrawnIntoIt) {
    GPUModel model;
    addRow(model, {Qt::red, Qt::green});
    const auto program = sceneProgram();
    for (const int samples : {0, 4}) {
        const auto picture = made({{16, 8}, samples});
        picture->clear(Qt::blue);
        {
            const AutoBinder target(picture.get());
            const AutoBinder binder(program.get());
            model.draw();
        }
        const QImage image = picture->toImage(_error);
        EXPECT_EQ(image.pixel(1, 6), qRgb(255, 0, 0));
        EXPECT_EQ(image.pixel(9, 6), qRgb(0, 255, 0));
        EXPECT_EQ(image.pixel(6, 1), qRgb(0, 0, 255));
    }
}

TEST_P(FramebufferTest, SamplesAreThoseAskedForUpToTheDriversMaximum) {
    GLint most = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &most);
    EXPECT_EQ(made({_size, 2})->samples(), 2);
    EXPECT_EQ(made({_size, 1})->samples(), 1);
    EXPECT_EQ(made({_size, 1 << 30})->samples(), most);
    EXPECT_EQ(made({_size, 2})->colorTexture(0), 0U);
}

// Every pixel of the left half, and the left half of the pixels in column 2, are covered.

TEST_P(FramebufferTest, SamplesOfIntegersHaveALimitOfTheirOwn) {
    static PFNGLGETINTEGERVPROC real = nullptr;
    made({_size, 2}); // libepoxy looks a function up in its first call
    real = glGetIntegerv;
    glGetIntegerv = [](GLenum name, GLint* value) {
        real(name, value);
        if (name == GL_MAX_INTEGER_SAMPLES)
            *value = 2;
        else if (name == GL_MAX_SAMPLES)
            *value = 3;
    };
    EXPECT_EQ(made({_size, 4, {Color::RGBA8, Color::R32I}})->samples(), 2);
    EXPECT_EQ(made({_size, 4})->samples(), 3);
    glGetIntegerv = [](GLenum name, GLint* value) {
        real(name, value);
        if (name == GL_MAX_SAMPLES)
            *value = -1;
    };
    EXPECT_EQ(made({_size, 4})->samples(), 1) << "of a driver that reports nonsense";
    glGetIntegerv = real;
}

TEST_P(FramebufferTest, TexturesHaveNearestFilters) {
    const auto picture = made({_size, 0, {Color::R32I}});
    glBindTexture(GL_TEXTURE_2D, picture->colorTexture(0));
    for (const GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER}) {
        GLint value = 0;
        glGetTexParameteriv(GL_TEXTURE_2D, filter, &value);
        EXPECT_EQ(value, GL_NEAREST);
    }
}

TEST_P(FramebufferTest, ImpossibleOptionsAreRefusedWithTheCause) {
    const std::string start = "A framebuffer of 0 x 5 pixels cannot be made: ";
    EXPECT_EQ(refused({{0, 5}}), start + "both sides must be at least 1");
    EXPECT_EQ(refused({{4, -1}}),
              "A framebuffer of 4 x -1 pixels cannot be made: both sides must be at least 1");
    EXPECT_EQ(refused({QSize()}),
              "A framebuffer of -1 x -1 pixels cannot be made: both sides must be at least 1");
    const std::string small = "A framebuffer of 5 x 3 pixels cannot be made: ";
    EXPECT_EQ(refused({_size, -1}), small + "it cannot have -1 samples");
    EXPECT_EQ(refused({_size, 0, {}, Depth::None}), small + "it has neither colours nor depths");
    EXPECT_EQ(refused({_size, 0, QVector<Color>(9, Color::RGBA8)}),
              small + "9 colours are more than the driver's 8");
    GLint side = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &side);
    const QString large =
        QStringLiteral("A framebuffer of %1 x 1 pixels cannot be made: the driver's largest "
                       "side is %2");
    EXPECT_EQ(refused({{side + 1, 1}}), large.arg(side + 1).arg(side).toStdString());
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    EXPECT_TRUE(made({{side, 1}}));
    EXPECT_TRUE(made({_size, 0, QVector<Color>(8, Color::RGBA32F)}));
    EXPECT_TRUE(made({_size, 0, {}, Depth::Float32})) << "depths alone";
}

TEST_P(FramebufferTest, FailureOfTheDriverIsTheCause) {
    glDisable(GL_DEBUG_OUTPUT);
    for (const GLFault fault :
         {GLFault::NoTextureNames, GLFault::NoFramebufferMemory, GLFault::NoFramebuffers}) {
        const FaultyDriver driver(fault);
        const int samples = fault == GLFault::NoFramebufferMemory ? 2 : 0;
        EXPECT_EQ(refused({_size, samples}),
                  "A framebuffer of 5 x 3 pixels cannot be made: OpenGL reports GL_OUT_OF_MEMORY")
            << int(fault);
    }
    EXPECT_TRUE(made({_size}));
    glEnable(GL_DEBUG_OUTPUT);
}

TEST_P(FramebufferTest, ClearColorRefusesIntegersAndUnknownColors) {
    const auto picture = made({_size, 0, {Color::RGBA8, Color::R32UI}});
    EXPECT_FALSE(picture->clearColor(1, {}));
    EXPECT_FALSE(picture->clearColor(2, {}));
    EXPECT_FALSE(picture->clearColor(-1, {}));
}

TEST_P(FramebufferTest, ClientsStateChangesNoResult) {
    const auto picture = made({_size, 2});
    const auto place = made({_size, 0, {Color::RGBA32F}, Depth::None});
    const auto program = placePainter();
    const BusyClient client;
    const BusyPainter painter;
    EXPECT_TRUE(picture->clear(QColor(1, 2, 3, 4)));
    EXPECT_EQ(picture->toImage(_error).pixel(4, 0), qRgba(1, 2, 3, 4));
    EXPECT_THAT(picture->readDepths(_error), Each(1.0F));
    EXPECT_TRUE(place->paint(*program, {}, _error));
    EXPECT_THAT(place->readFloats(_error, 0, {4, 2, 1, 1}), ElementsAre(4.0F, 0.0F, -1.5F, 2.0F));
}

TEST_P(FramebufferTest, NoCallChangesTheClientsState) {
    const auto program = placePainter();
    const auto painted = made({_size});
    const auto target = made({_size});
    const std::pair<const char*, std::function<void(Picture&)>> calls[] = {
        {"create",
         [&](Picture&) {
             made({_size, 2});
         }},
        {"clear", [](Picture& picture) { picture.clear(); }},
        {"clearColor", [](Picture& picture) { picture.clearColor(0, {}); }},
        {"setDrawnColors", [](Picture& picture) { picture.setDrawnColors({0}); }},
        {"setLabel", [](Picture& picture) { picture.setLabel(QStringLiteral("label")); }},
        {"resolveInto", [&](Picture& picture) { picture.resolveInto(*target, _error); }},
        {"paint",
         [&](Picture& picture) {
             picture.paint(*program, {{painted.get(), 0}}, _error);
         }},
        {"toImage", [&](Picture& picture) { picture.toImage(_error); }},
        {"readFloats", [&](Picture& picture) { picture.readFloats(_error); }},
        {"readIntegers", [&](Picture& picture) { picture.readIntegers(_error); }},
        {"readDepths", [&](Picture& picture) { picture.readDepths(_error); }},
        {"names", [](Picture& picture) { picture.name(), picture.colorTexture(0); }},
        {"bind", [](Picture& picture) { const AutoBinder binder(&picture); }},
    };
    for (const int samples : {0, 2})
        for (const auto& [name, call] : calls) {
            const auto picture = made({_size, samples});
            const BusyClient client;
            const BusyPainter painter;
            const ClientState before = ClientState::captured();
            call(*picture);
            EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "") << name << ' ' << samples;
        }
}

TEST_P(FramebufferTest, ContextsThatShareHaveTheSameContent) {
    OpenGLDeviceContext::HeadlessOptions shared = options();
    shared.shareWith = _context;
    const auto sharing = makeContext(shared);
    const auto picture = made({_size, 0, {Color::RGBA8, Color::RGBA8}});
    picture->setDrawnColors({1});
    picture->clear(QColor(1, 2, 3, 4));
    glFinish();
    sharing->makeCurrent();
    watchMessages();
    EXPECT_EQ(picture->toImage(_error).pixel(0, 0), qRgba(1, 2, 3, 4));
    {
        const AutoBinder binder(picture.get());
        GLint buffers[2] = {};
        glGetIntegerv(GL_DRAW_BUFFER0, &buffers[0]);
        glGetIntegerv(GL_DRAW_BUFFER1, &buffers[1]);
        EXPECT_THAT(buffers, ElementsAre(GL_NONE, GL_COLOR_ATTACHMENT1));
    }
    _context->makeCurrent();
}

TEST_P(FramebufferTest, OtherContextsDoNotKnowIt) {
    const auto picture = made({_size});
    const auto program = placePainter();
    const std::string foreign =
        "The framebuffer belongs to a context that does not share with the current one";
    const auto expectUnknown = [&](const std::string& cause) {
        QString error;
        EXPECT_EQ(picture->name(), 0U);
        EXPECT_EQ(picture->colorTexture(0), 0U);
        EXPECT_FALSE(picture->bind());
        picture->unbind();
        EXPECT_FALSE(picture->clear());
        EXPECT_FALSE(picture->clearColor(0, {}));
        picture->setDrawnColors({});
        EXPECT_TRUE(picture->toImage(error).isNull());
        EXPECT_EQ(error.toStdString(), cause);
        error.clear();
        EXPECT_FALSE(picture->paint(*program, {}, error));
        EXPECT_EQ(error.toStdString(), cause);
        error.clear();
        EXPECT_FALSE(picture->resolveInto(*picture, error));
        EXPECT_EQ(error.toStdString(), cause);
    };
    const auto unrelated = makeContext(options());
    unrelated->makeCurrent();
    watchMessages();
    expectUnknown(foreign);
    unrelated->doneCurrent();
    expectUnknown("No OpenGL context is current");
    QString error;
    EXPECT_FALSE(Picture::create({_size}, error));
    EXPECT_EQ(error, "No OpenGL context is current");
    _context->makeCurrent();
}

TEST_P(FramebufferTest, UnbindInAnotherContextChangesNothing) {
    const auto picture = made({_size});
    const auto other = makeContext(options());
    ASSERT_TRUE(picture->bind());
    other->makeCurrent();
    watchMessages();
    const BusyPainter painter;
    const ClientState before = ClientState::captured();
    picture->unbind();
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
    _context->makeCurrent();
}

TEST_P(FramebufferTest, EveryNameIsDeletedOnce) {
    const NameCount names;
    for (const int samples : {0, 2}) {
        const auto picture = made({_size, samples, {Color::RGBA8, Color::R32F}});
        picture->toImage(_error);
        picture->paint(*placePainter(), {}, _error);
    }
    EXPECT_GT(names.made(), 0);
    EXPECT_EQ(names.imbalance(), QStringList());
}

TEST_P(FramebufferTest, MayBeDestroyedWithoutAContext) {
    auto picture = made({_size, 2});
    const GLuint name = picture->name();
    _context->doneCurrent();
    picture.reset();
    _context->makeCurrent();
    EXPECT_FALSE(glIsFramebuffer(name)) << "deleted with the next use";
}

TEST_P(FramebufferTest, LabelNamesTheObjectForTheDriver) {
    const auto picture = made({_size});
    picture->setLabel(QStringLiteral("thumbnail"));
    char text[32] = {};
    glGetObjectLabel(GL_FRAMEBUFFER, picture->name(), sizeof text, nullptr, text);
    EXPECT_STREQ(text, "thumbnail");
}

} // namespace Atelier::Vel::Testing
