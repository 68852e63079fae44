#include <epoxy/gl.h>

#include "clientstate.h"

#include <stdexcept>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>
#include <velgl/drawbuffers.h>
#include <velgl/glentrypoints.h>
#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/texture.h>
#include <velgl/vertexarrayobject.h>

#include "support/glfixture.h"
#include "support/messagelog.h"
#include "testscene.h"

// Textures and models whose content is filled again in a further group of contexts.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char kLostWarning[] =
    "Model 'row' lost its context: its buffers have no content in the current one, so it is not drawn";

class RefillTest : public GLFixture {
protected:
    void SetUp() override {
        GLFixture::SetUp();
        registerTestPlans();
        _model.setLabel(QStringLiteral("row"));
        addRow(_model, {Qt::red});
    }
    void TearDown() override {
        _context->makeCurrent();
        GLFixture::TearDown();
    }
    // A context that does not share with the one of the test; it is current.
    QSharedPointer<OpenGLDeviceContext> unrelated() {
        QSharedPointer<OpenGLDeviceContext> context = makeContext(options());
        EXPECT_TRUE(context->makeCurrent());
        watchMessages();
        return context;
    }
    // Replaces the context, as a widget does that moves to another window.
    void replaceContext() {
        _context = makeContext(options());
        _context->makeCurrent();
        watchMessages();
    }

    GPUModel _model;
};

// Fills a texture of 1 x 1 with a colour.
bool fillWith(const QColor& color) {
    const unsigned char texel[] = {static_cast<unsigned char>(color.red()),
                                   static_cast<unsigned char>(color.green()),
                                   static_cast<unsigned char>(color.blue()), 255};
    glEntryPoints().texImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texel);
    return true;
}

QColor colorOf(const Texture& texture) {
    return texture.readBack().pixelColor(0, 0);
}

// Holds the content of a model's buffers in memory.
class Copy {
public:
    explicit Copy(const GPUModel& model) : _indices(model.drawable(0)->indexBuffer()->readBack()) {
        for (const VertexArrayObject::Stream& stream : model.drawable(0)->VAO()->streams())
            _streams.append(stream.buffer->readBack());
    }
    bool fill(const GPUModel& model) const {
        const DrawBuffers& buffers = *model.drawable(0);
        bool isFilled = put(_indices, *buffers.indexBuffer());
        for (int i = 0; i < _streams.size(); ++i)
            isFilled = put(_streams[i], *buffers.VAO()->streams()[i].buffer) && isFilled;
        return isFilled;
    }

private:
    static bool put(const QByteArray& bytes, BufferObject& buffer) {
        return buffer.uploadArbitraryData(bytes.constData(), bytes.size(), GL_STATIC_DRAW, 1);
    }

    QByteArray _indices;
    QVector<QByteArray> _streams;
};

} // namespace

TEST_F(RefillTest, ModelWithoutAFunctionSaysOnceThatItLostItsContext) {
    EXPECT_TRUE(_model.isUsable());
    EXPECT_EQ(rowColor(_model), QColor(Qt::red));
    replaceContext();
    const MessageLog log;
    EXPECT_FALSE(_model.isUsable());
    for (int frame = 0; frame < 3; ++frame)
        EXPECT_EQ(rowColor(_model), QColor(Qt::black));
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(QString(kLostWarning)));
}

TEST_F(RefillTest, ModelIsNotUsableWithoutAContext) {
    _context->doneCurrent();
    EXPECT_FALSE(_model.isUsable());
    _context->makeCurrent();
    EXPECT_TRUE(_model.isUsable());
}

TEST_F(RefillTest, ModelThatWasNeverFilledIsNotLost) {
    GPUModel empty;
    auto* buffers = new DrawBuffers;
    buffers->setVAO(QSharedPointer<VertexArrayObject>::create());
    buffers->setIndexedDraw(QSharedPointer<BufferObject>::create(), 3, GL_UNSIGNED_INT);
    empty.add(buffers, 1, nullptr, nullptr, 0);
    const MessageLog log;
    EXPECT_TRUE(empty.isUsable());
    EXPECT_EQ(rowColor(empty), QColor(Qt::black));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_F(RefillTest, LostIndicesAloneLoseTheModel) {
    GPUModel model;
    model.setLabel(QStringLiteral("row"));
    auto* buffers = new DrawBuffers;
    buffers->setVAO(QSharedPointer<VertexArrayObject>::create());
    buffers->setIndexedDraw(bufferOf(QVector<unsigned int>{0, 1, 2}), 3, GL_UNSIGNED_INT);
    model.add(buffers, 1, nullptr, nullptr, 0);
    EXPECT_TRUE(model.isUsable());
    const auto other = unrelated();
    EXPECT_FALSE(model.isUsable());
}

TEST_F(RefillTest, FunctionFillsTheModelOnceInEachGroup) {
    int calls = 0;
    const Copy copy(_model);
    _model.setRefill([&](GPUModel& model) {
        ++calls;
        return copy.fill(model);
    });
    EXPECT_EQ(rowColor(_model), QColor(Qt::red));
    EXPECT_EQ(calls, 0);
    const auto other = unrelated();
    const MessageLog log;
    EXPECT_FALSE(_model.isUsable());
    for (int frame = 0; frame < 3; ++frame)
        EXPECT_EQ(rowColor(_model), QColor(Qt::red));
    EXPECT_TRUE(_model.isUsable());
    EXPECT_EQ(calls, 1);
    _context->makeCurrent();
    EXPECT_EQ(rowColor(_model), QColor(Qt::red)) << "both windows show it";
    replaceContext();
    EXPECT_EQ(rowColor(_model), QColor(Qt::red));
    EXPECT_EQ(calls, 2);
    other->makeCurrent();
    EXPECT_EQ(rowColor(_model), QColor(Qt::red));
    EXPECT_EQ(calls, 2);
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_F(RefillTest, ChangedValuesAreDrawnInEachGroupAndAfterALoss) {
    const Copy copy(_model);
    _model.setRefill([&](GPUModel& model) { return copy.fill(model); });
    EXPECT_EQ(rowColor(_model), QColor(Qt::red));
    EXPECT_TRUE(_model.materials(0)->set(0, coloredMaterial(Qt::green)));
    const auto other = unrelated();
    EXPECT_EQ(rowColor(_model), QColor(Qt::green)) << "in a group that did not exist before";
    EXPECT_TRUE(_model.materials(0)->set(0, coloredMaterial(Qt::blue)));
    EXPECT_EQ(rowColor(_model), QColor(Qt::blue));
    _context->makeCurrent();
    EXPECT_EQ(rowColor(_model), QColor(Qt::blue)) << "in the first group";
    replaceContext();
    EXPECT_EQ(rowColor(_model), QColor(Qt::blue)) << "in the group that replaces it";
    EXPECT_TRUE(_model.instances(0)->set(0, movedInstance({8, 0, 0})));
    replaceContext();
    EXPECT_EQ(rowColor(_model), QColor(Qt::black)) << "it was moved away before the loss";
    EXPECT_TRUE(_model.instances(0)->set(0, movedInstance({})));
    _model.drawable(0)->setVisibility(0, DrawBuffers::Visibility::Hidden);
    replaceContext();
    EXPECT_EQ(rowColor(_model), QColor(Qt::black)) << "it was hidden before the loss";
    _model.drawable(0)->setVisibility(0, DrawBuffers::Visibility::Shown);
    EXPECT_EQ(rowColor(_model), QColor(Qt::blue));
    other->makeCurrent();
    EXPECT_EQ(rowColor(_model), QColor(Qt::blue));
}

TEST_F(RefillTest, FunctionThatFailsIsCalledOnceInAGroup) {
    int calls = 0;
    _model.setRefill([&](GPUModel&) {
        ++calls;
        return false;
    });
    const auto other = unrelated();
    const MessageLog log;
    EXPECT_EQ(rowColor(_model), QColor(Qt::black));
    EXPECT_EQ(rowColor(_model), QColor(Qt::black));
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(log.texts(QtWarningMsg), ElementsAre(QString(kLostWarning)));
    _model.setRefill([&](GPUModel&) {
        ++calls;
        return true; // although it fills nothing
    });
    EXPECT_EQ(rowColor(_model), QColor(Qt::black));
    EXPECT_EQ(calls, 2) << "another function may succeed";
    EXPECT_EQ(log.texts(QtWarningMsg).size(), 2U);
}

TEST_F(RefillTest, FunctionMayReplaceItselfAndDrawOthers) {
    const Copy copy(_model);
    _model.setRefill([&](GPUModel& model) {
        model.setRefill({});
        GPUModel other;
        addRow(other, {Qt::blue});
        other.draw();
        return copy.fill(model);
    });
    EXPECT_TRUE(_model.refill());
    const auto other = unrelated();
    EXPECT_EQ(rowColor(_model), QColor(Qt::red));
    EXPECT_FALSE(_model.refill());
}

TEST_F(RefillTest, ExceptionOfAModelsFunctionLeavesTheStateAsItWas) {
    _model.setRefill([](GPUModel&) -> bool { throw std::runtime_error("no data"); });
    const auto other = unrelated();
    const BusyClient client;
    const ClientState before = ClientState::captured();
    EXPECT_THROW(_model.draw(), std::runtime_error);
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
}

TEST_F(RefillTest, TextureIsFilledAgainInEachGroup) {
    int calls = 0;
    Texture texture(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    texture.setRefill([&](Texture& lost) {
        EXPECT_EQ(&lost, &texture);
        ++calls;
        return fillWith(Qt::green);
    });
    texture.setReadOnly();
    EXPECT_TRUE(texture.bind());
    texture.unbind();
    EXPECT_EQ(colorOf(texture), QColor(Qt::green));
    const auto other = unrelated();
    const MessageLog log;
    for (int frame = 0; frame < 2; ++frame) {
        EXPECT_TRUE(texture.bind());
        texture.unbind();
    }
    EXPECT_EQ(colorOf(texture), QColor(Qt::green));
    EXPECT_EQ(calls, 2);
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_F(RefillTest, TextureThatCannotBeFilledIsWhiteAfterOneWarning) {
    Texture texture(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    texture.setLabel(QStringLiteral("wood"));
    texture.setRefill([](Texture&) { return false; });
    const MessageLog log;
    for (int frame = 0; frame < 2; ++frame) {
        EXPECT_TRUE(texture.bind());
        texture.unbind();
    }
    EXPECT_EQ(colorOf(texture), QColor(Qt::white));
    EXPECT_THAT(log.texts(QtWarningMsg),
                ElementsAre(QStringLiteral(
                    "Texture 'wood' could not be filled again in another context; it is white there")));
}

TEST_F(RefillTest, TextureIsCheckedForItsImageWhateverTheFunctionLeavesBound) {
    Texture texture(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    texture.setLabel(QStringLiteral("wood")); // warnings wait for it
    GLuint empty = 0;
    glGenTextures(1, &empty);
    texture.setRefill([&](Texture&) {
        const bool isFilled = fillWith(Qt::green);
        glBindTexture(GL_TEXTURE_2D, empty);
        return isFilled;
    });
    const MessageLog log;
    EXPECT_TRUE(texture.bind());
    texture.unbind();
    EXPECT_EQ(colorOf(texture), QColor(Qt::green));
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
    glDeleteTextures(1, &empty);
}

TEST_F(RefillTest, ReadOnlyTextureIsMadeInEachGroupOnceItCanBeFilled) {
    Texture texture(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    texture.setReadOnly();
    const MessageLog log;
    const auto expectUnmade = [&] {
        EXPECT_FALSE(texture.bind());
        texture.unbind();
        EXPECT_EQ(texture.name(), 0U);
    };
    expectUnmade();
    const auto other = unrelated();
    expectUnmade();
    texture.setRefill([](Texture&) { return fillWith(Qt::green); });
    for (const auto& context : {other, _context}) {
        context->makeCurrent();
        EXPECT_TRUE(texture.bind());
        texture.unbind();
        EXPECT_EQ(colorOf(texture), QColor(Qt::green));
    }
    EXPECT_THAT(log.texts(QtWarningMsg), IsEmpty());
}

TEST_F(RefillTest, ExceptionOfATexturesFunctionLeavesTheStateAsItWasAndIsTriedAgain) {
    Texture texture(GL_TEXTURE_2D, GL_RGBA8, 1, 1, 0, nullptr);
    bool isBroken = true;
    texture.setRefill([&](Texture&) {
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glActiveTexture(GL_TEXTURE4);
        if (isBroken)
            throw std::runtime_error("no data");
        glActiveTexture(GL_TEXTURE3); // where the texture is bound
        return fillWith(Qt::green);
    });
    const BusyClient client;
    const ClientState before = ClientState::captured();
    EXPECT_THROW(texture.bind(), std::runtime_error);
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
    EXPECT_EQ(texture.name(), 0U);
    isBroken = false;
    EXPECT_TRUE(texture.bind());
    texture.unbind();
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
    EXPECT_EQ(colorOf(texture), QColor(Qt::green));
}

} // namespace Atelier::Vel::Testing
