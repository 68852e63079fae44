#include <epoxy/gl.h>

#include <functional>

#include <gmock/gmock.h>

#include <velgl/autobinder.h>
#include <velgl/renderstate.h>

#include "framebufferfixture.h"

namespace Atelier::Vel::Testing {

namespace {

using testing::Each;
using testing::ElementsAre;

class FramebufferReadingTest : public FramebufferFixture {};

// Paints the place of a pixel and two numbers. `type` is ivec4 or uvec4.
QByteArray integers(const QByteArray& type) {
    return "out " + type + " pixel;\nvoid main() { pixel = " + type +
           "(gl_FragCoord.x, gl_FragCoord.y, 7, 8); }\n";
}

} // namespace

INSTANTIATE_FOR_DRIVERS(FramebufferReadingTest);

TEST_P(FramebufferReadingTest, RowsBeginAtTheUpperEdge) {
    const auto picture = made({_size, 0, {Color::RGBA32F}, Depth::None});
    ASSERT_TRUE(picture->paint(*placePainter(), {}, _error)) << _error.toStdString();
    const QVector<float> floats = picture->readFloats(_error);
    ASSERT_EQ(floats.size(), kWidth * kHeight * 4);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            EXPECT_THAT(floats.mid((y * kWidth + x) * 4, 4),
                        ElementsAre(float(x), float(kHeight - 1 - y), -1.5F, 2.0F));
    EXPECT_THAT(picture->readFloats(_error, 0, {3, 1, 1, 2}),
                ElementsAre(3.0F, 1.0F, -1.5F, 2.0F, 3.0F, 0.0F, -1.5F, 2.0F));
    EXPECT_EQ(picture->toImage(_error, 0, {0, 2, 2, 1}).pixel(1, 0), qRgba(255, 0, 0, 255))
        << "cut to 0 to 1";
}

TEST_P(FramebufferReadingTest, OneChannelGivesOneValueForEachPixel) {
    const auto picture = made({_size, 0, {Color::R32F, Color::R16F}, Depth::None});
    ASSERT_TRUE(picture->clearColor(0, {0.2F, 5, 6, 7}));
    ASSERT_TRUE(picture->clearColor(1, {-2.5F, 5, 6, 7}));
    EXPECT_THAT(picture->readFloats(_error, 0), Each(0.2F));
    EXPECT_EQ(picture->readFloats(_error, 0).size(), kWidth * kHeight);
    EXPECT_THAT(picture->readFloats(_error, 1, {2, 2, 3, 1}), ElementsAre(-2.5F, -2.5F, -2.5F));
    EXPECT_EQ(picture->toImage(_error, 0).pixel(0, 0), qRgba(51, 0, 0, 255));
}

TEST_P(FramebufferReadingTest, IntegersAreReadAsTheyWereWritten) {
    const auto picture = made({_size, 0, {Color::RGBA32I}, Depth::None});
    ASSERT_TRUE(picture->paint(*painter(integers("ivec4")), {}, _error)) << _error.toStdString();
    EXPECT_THAT(picture->readIntegers(_error, 0, {4, 0, 1, 1}), ElementsAre(4, kHeight - 1, 7, 8));
    EXPECT_TRUE(picture->clear());
    EXPECT_THAT(picture->readIntegers(_error), Each(0));
    const auto numbers = made({_size, 0, {Color::RGBA32UI}, Depth::None});
    ASSERT_TRUE(numbers->paint(*painter(integers("uvec4")), {}, _error)) << _error.toStdString();
    EXPECT_THAT(numbers->readUnsignedIntegers(_error, 0, {1, 2, 1, 1}), ElementsAre(1U, 0U, 7U, 8U));
    EXPECT_TRUE(numbers->clear());
    EXPECT_THAT(numbers->readUnsignedIntegers(_error), Each(0U));
}

TEST_P(FramebufferReadingTest, ResolvedPixelsAreTheMeanOfTheirSamples) {
    QString error;
    const auto half = Program::fromSource("#version 430 core\n"
                                          "void main() {\n"
                                          "    vec2 at = vec2((gl_VertexID << 1) & 2, gl_VertexID & 2);\n"
                                          "    gl_Position = vec4(at.x > 0.0 ? 0.0 : -1.0, at.y * 9.0 - 4.0, "
                                          "0.5, 1.0);\n"
                                          "}\n",
                                          "#version 430 core\n"
                                          "out vec4 pixel;\n"
                                          "void main() { pixel = vec4(1.0, 0.5, 0.25, 1.0); }\n",
                                          error);
    ASSERT_TRUE(half) << error.toStdString();
    const auto picture = made({{4, 4}, 4, {Color::RGBA32F}});
    const auto resolved = made({{4, 4}, 0, {Color::RGBA32F}});
    picture->clear();
    resolved->clear(Qt::white);
    picture->paint(*half, {}, _error);
    ASSERT_TRUE(picture->resolveInto(*resolved, _error)) << _error.toStdString();
    EXPECT_EQ(resolved->readFloats(_error), picture->readFloats(_error)) << "reading resolves as well";
    EXPECT_EQ(resolved->readDepths(_error), picture->readDepths(_error));
    const QVector<float> values = resolved->readFloats(_error);
    bool isAnyPartial = false;
    for (int pixel = 0; pixel < 16; ++pixel) {
        const float share = values[pixel * 4];
        isAnyPartial = isAnyPartial || (share > 0 && share < 1);
        EXPECT_FLOAT_EQ(values[pixel * 4 + 1], share / 2);
    }
    EXPECT_TRUE(isAnyPartial);
}

TEST_P(FramebufferReadingTest, ResolveCopiesEveryColorAndTheDepths) {
    const auto source = made({_size, 2, {Color::RGBA8, Color::R32F}});
    const auto target = made({_size, 0, {Color::RGBA8, Color::R32F}});
    source->clear(QColor(9, 8, 7, 6));
    source->clearColor(1, {0.5F, 0, 0, 0});
    GPUModel model;
    addRow(model, {Qt::red});
    {
        const auto program = sceneProgram();
        const AutoBinder bound(source.get());
        const AutoBinder binder(program.get());
        const ScopedRenderState state;
        source->setDrawnColors({});
        model.draw();
    }
    target->setDrawnColors({});
    target->clear(Qt::white);
    ASSERT_TRUE(source->resolveInto(*target, _error)) << _error.toStdString();
    EXPECT_EQ(target->toImage(_error).pixel(4, 0), qRgba(9, 8, 7, 6));
    EXPECT_THAT(target->readFloats(_error, 1), Each(0.5F));
    EXPECT_THAT(target->readDepths(_error, {0, 2, 1, 1}), ElementsAre(0.5F)) << "in the triangle";
    EXPECT_THAT(target->readDepths(_error, {4, 0, 1, 1}), ElementsAre(1.0F)) << "beside it";
}

TEST_P(FramebufferReadingTest, ResolveNeedsEqualSizesAndColors) {
    const auto source = made({_size, 2, {Color::RGBA8}});
    const auto isRefused = [&](const Picture::Options& options) {
        QString error;
        EXPECT_FALSE(source->resolveInto(*made(options), error));
        return error.toStdString();
    };
    EXPECT_EQ(isRefused({{kWidth, kHeight + 1}}), "The framebuffers have different sizes");
    EXPECT_EQ(isRefused({_size, 0, {Color::R32F}}), "The framebuffers have different colours");
    EXPECT_EQ(isRefused({_size, 2}), "The target is multisampled");
}

TEST_P(FramebufferReadingTest, PaintReadsOtherFramebuffers) {
    const auto first = made({_size, 0, {Color::RGBA8, Color::RGBA8}});
    const auto second = made({_size});
    first->clear(Qt::black);
    first->clearColor(1, {1, 0, 0, 1});
    second->clearColor(0, {0, 0, 1, 1});
    const auto sum =
        painter("uniform sampler2D a;\n"
                "uniform sampler2D b;\n"
                "out vec4 pixel;\n"
                "void main() { pixel = texelFetch(a, ivec2(0), 0) + texelFetch(b, ivec2(0), 0); }\n");
    sum->setUniform("a", 0);
    sum->setUniform("b", 1);
    const auto picture = made({{2, 2}});
    ASSERT_TRUE(picture->paint(*sum, {{first.get(), 1}, {second.get(), 0}}, _error)) << _error.toStdString();
    EXPECT_EQ(picture->toImage(_error).pixel(1, 1), qRgb(255, 0, 255));
}

TEST_P(FramebufferReadingTest, PaintNeedsTexturesOfOtherFramebuffers) {
    const auto picture = made({_size});
    const auto sampled = made({_size, 2});
    const auto program = placePainter();
    const auto isRefused = [&](const QVector<Picture::Input>& inputs) {
        QString error;
        EXPECT_FALSE(picture->paint(*program, inputs, error));
        return error.toStdString();
    };
    EXPECT_EQ(isRefused({{picture.get(), 0}}), "A framebuffer cannot be painted from itself");
    EXPECT_EQ(isRefused({{nullptr, 0}}), "Input 0 has no texture in the current context");
    EXPECT_EQ(isRefused({{sampled.get(), 0}}), "Input 0 has no texture in the current context");
    EXPECT_EQ(isRefused(QVector<Picture::Input>(33)), "33 inputs are more than 32");
}

TEST_P(FramebufferReadingTest, WrongReadsAreRefusedWithTheCause) {
    const auto picture = made({_size, 0, {Color::RGBA8, Color::R32I, Color::RGBA32UI}, Depth::None});
    const auto expectError = [&](const std::function<bool(QString&)>& isEmpty, const char* text) {
        QString error;
        EXPECT_TRUE(isEmpty(error));
        EXPECT_EQ(error.toStdString(), text);
    };
    expectError([&](QString& error) { return picture->toImage(error, 1).isNull(); },
                "Colour 1 holds signed integers and cannot be read as floats");
    expectError([&](QString& error) { return picture->readFloats(error, 2).isEmpty(); },
                "Colour 2 holds unsigned integers and cannot be read as floats");
    expectError([&](QString& error) { return picture->readIntegers(error, 0).isEmpty(); },
                "Colour 0 holds floats and cannot be read as signed integers");
    expectError([&](QString& error) { return picture->readIntegers(error, 2).isEmpty(); },
                "Colour 2 holds unsigned integers and cannot be read as signed integers");
    expectError([&](QString& error) { return picture->readUnsignedIntegers(error, 1).isEmpty(); },
                "Colour 1 holds signed integers and cannot be read as unsigned integers");
    expectError([&](QString& error) { return picture->toImage(error, 3).isNull(); },
                "The framebuffer has no colour 3");
    expectError([&](QString& error) { return picture->toImage(error, -1).isNull(); },
                "The framebuffer has no colour -1");
    expectError([&](QString& error) { return picture->readDepths(error).isEmpty(); },
                "The framebuffer has no depths");
    expectError(
        [&](QString& error) {
            return picture->toImage(error, 0, {4, 0, 2, 1}).isNull();
        },
        "The area of 2 x 1 pixels at 4, 0 is not within 5 x 3 pixels");
    expectError(
        [&](QString& error) {
            return picture->readFloats(error, 0, {0, 0, 0, 2}).isEmpty();
        },
        "The area of 0 x 2 pixels at 0, 0 is not within 5 x 3 pixels");
}

TEST_P(FramebufferReadingTest, ReadIntoWritesItsRectangleOnly) {
    const auto picture = made({{2, 2}});
    picture->clear(Qt::red);
    QImage image(4, 3, QImage::Format_RGBA8888);
    image.fill(Qt::blue);
    const QImage copy = image;
    ASSERT_TRUE(picture->readInto(image, {1, 1}, _error)) << _error.toStdString();
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x)
            EXPECT_EQ(image.pixelColor(x, y),
                      (x == 1 || x == 2) && y >= 1 ? QColor(Qt::red) : QColor(Qt::blue));
    EXPECT_EQ(copy.pixelColor(1, 1), QColor(Qt::blue)) << "the copy shared its pixels";
    EXPECT_FALSE(picture->readInto(image, {3, 0}, _error));
    EXPECT_EQ(_error, "The image is not of Format_RGBA8888, or too small");
    QImage other(4, 4, QImage::Format_ARGB32);
    EXPECT_FALSE(picture->readInto(other, {0, 0}, _error));
}

} // namespace Atelier::Vel::Testing
