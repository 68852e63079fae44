#include "glfaults.h"
#include "glhooks.h"

#include <velgl/drawbuffers.h>

#include <limits>

#include <gmock/gmock.h>

#include <velgl/bufferobject.h>
#include <velgl/vertexarrayobject.h>

#include "scenefixture.h"
#include "support/messagelog.h"

// Which commands of one drawable are drawn, for any range and after changes between draws.
namespace Atelier::Vel::Testing {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

/// Draws a row of four triangles with one command each.
class DrawBuffersDrawTest : public SceneFixture {
protected:
    static constexpr int kCells = 4;

    void SetUp() override {
        SceneFixture::SetUp();
        _program = commandProgram();
        _row.reset(triangleRow(kCells));
    }
    void TearDown() override {
        _row.reset();
        SceneFixture::TearDown();
    }

    /// Returns: for each cell the number of the command that draws there; -1 if none does.
    QVector<int> drawn(int first, int count) const {
        QVector<int> commands;
        for (const QColor& color : drawnColors(*_row, kCells, first, count))
            commands << color.red() / 10 - 1;
        return commands;
    }
    QVector<int> drawn() const { return drawn(0, kCells); }

    void setCommands(const QVector<DrawElementsIndirectCommand>& commands) const {
        _row->setDrawElementsIndirectCommands(commands.constData(), commands.size());
    }

    std::unique_ptr<DrawBuffers> _row;
    MessageLog _log;
};

const QVector<int> kAll = {0, 1, 2, 3};
const QVector<int> kNone = {-1, -1, -1, -1};

QVector<unsigned short> shortIndices(int count) {
    QVector<unsigned short> indices;
    for (int i = 0; i < count; ++i)
        indices << static_cast<unsigned short>(i);
    return indices;
}

} // namespace

INSTANTIATE_FOR_DRIVERS(DrawBuffersDrawTest);

TEST_P(DrawBuffersDrawTest, AnyRangeOfCommandsCanBeDrawn) {
    EXPECT_EQ(drawn(), kAll);
    EXPECT_EQ(drawn(1, 2), (QVector<int>{-1, 1, 2, -1}));
    EXPECT_EQ(drawn(3, 1), (QVector<int>{-1, -1, -1, 3}));
    EXPECT_EQ(drawn(2, 0), kNone);
    EXPECT_EQ(drawn(2, -1), kNone);
}

TEST_P(DrawBuffersDrawTest, RangeIsCutAtTheFirstCommand) {
    EXPECT_EQ(drawn(-1, 2), (QVector<int>{0, -1, -1, -1}));
    EXPECT_EQ(drawn(-2, 2), kNone);
    EXPECT_EQ(drawn(-2, 100), kAll);
    EXPECT_EQ(drawn(-2, kHighest), kAll);
    EXPECT_EQ(drawn(kLowest, kHighest), kNone);
    EXPECT_EQ(drawn(-1, kLowest), kNone);
    EXPECT_EQ(drawn(kLowest, kLowest), kNone);
}

TEST_P(DrawBuffersDrawTest, RangeIsCutAtTheLastCommand) {
    EXPECT_EQ(drawn(2, 3), (QVector<int>{-1, -1, 2, 3}));
    EXPECT_EQ(drawn(2, kHighest), (QVector<int>{-1, -1, 2, 3}));
    EXPECT_EQ(drawn(4, 1), kNone);
    EXPECT_EQ(drawn(kHighest, kHighest), kNone);
    EXPECT_EQ(drawn(0, kHighest), kAll);
}

TEST_P(DrawBuffersDrawTest, OneCallDrawsAllCommandsWithDrawParameters) {
    _row->setPrimitiveType(GL_LINE_LOOP);
    const DrawHook hook;
    drawn(1, 3);
    ASSERT_EQ(hook.calls().size(), hasDrawParameters() ? 1U : 3U);
    for (std::size_t i = 0; i < hook.calls().size(); ++i) {
        const DrawCall& call = hook.calls()[i];
        EXPECT_EQ(call.mode, GLenum(GL_LINE_LOOP));
        EXPECT_EQ(call.type, GLenum(GL_UNSIGNED_SHORT));
        EXPECT_EQ(call.offset, (1 + i) * sizeof(DrawElementsIndirectCommand));
        EXPECT_EQ(call.count, hasDrawParameters() ? 3 : 1);
        EXPECT_EQ(call.stride, 0);
    }
}

TEST_P(DrawBuffersDrawTest, UniformOfTheCommandNumberMayHaveLocationZero) {
    QString error;
    _program = Program::fromSource(
        "#version 430 core\nlayout(location = 0) uniform int velgl_firstCommand;\n"
        "in vec3 va_Vertex;\nflat out int command;\n"
        "void main() { command = velgl_firstCommand; gl_Position = vec4(va_Vertex, 1.0); }\n",
        "#version 430 core\nflat in int command;\nout vec4 pixel;\n"
        "void main() { pixel = vec4(float(command + 1) * 10.0 / 255.0, 0.0, 0.0, 1.0); }\n",
        error);
    ASSERT_TRUE(_program) << error.toStdString();
    EXPECT_EQ(drawn(2, 1), (QVector<int>{-1, -1, 2, -1}));
}

TEST_P(DrawBuffersDrawTest, EachIndexTypeDraws) {
    QVector<unsigned char> bytes;
    QVector<unsigned int> words;
    for (const unsigned short index : shortIndices(3 * kCells)) {
        bytes << static_cast<unsigned char>(index);
        words << index;
    }
    _row->setIndexedDraw(bufferOf(bytes), bytes.size(), GL_UNSIGNED_BYTE);
    EXPECT_EQ(drawn(), kAll);
    _row->setIndexedDraw(bufferOf(words), words.size(), GL_UNSIGNED_INT);
    EXPECT_EQ(drawn(), kAll);
    for (const GLenum type : {GL_BYTE, GL_SHORT, GL_INT, GL_FLOAT, GL_NONE}) {
        _row->setIndexedDraw(bufferOf(words), words.size(), type);
        EXPECT_EQ(drawn(), kNone) << type;
    }
    EXPECT_THAT(_log.messages(), IsEmpty());
}

TEST_P(DrawBuffersDrawTest, CommandBeyondTheIndexBufferDrawsNothing) {
    _row->setIndexedDraw(bufferOf(shortIndices(9)), 3 * kCells, GL_UNSIGNED_SHORT);
    EXPECT_EQ(drawn(), (QVector<int>{0, 1, 2, -1}));
    _row->setIndexedDraw(bufferOf(shortIndices(8)), 3 * kCells, GL_UNSIGNED_SHORT);
    EXPECT_EQ(drawn(), (QVector<int>{0, 1, -1, -1}));
    EXPECT_THAT(_log.texts(QtWarningMsg),
                ElementsAre("1 of 4 draw commands reach beyond the 9 indices; they draw nothing",
                            "2 of 4 draw commands reach beyond the 8 indices; they draw nothing"));
}

TEST_P(DrawBuffersDrawTest, CommandBeyondTheIndexCountDrawsNothing) {
    for (const int count : {6, 5, 0, -1}) {
        _row->setIndexedDraw(_row->indexBuffer(), count, GL_UNSIGNED_SHORT);
        EXPECT_EQ(drawn(), (QVector<int>{count > 2 ? 0 : -1, count > 5 ? 1 : -1, -1, -1})) << count;
    }
    EXPECT_THAT(_log.texts(QtWarningMsg),
                ElementsAre("2 of 4 draw commands reach beyond the 6 indices; they draw nothing",
                            "3 of 4 draw commands reach beyond the 5 indices; they draw nothing",
                            "4 of 4 draw commands reach beyond the 0 indices; they draw nothing",
                            "4 of 4 draw commands reach beyond the 0 indices; they draw nothing"));
}

TEST_P(DrawBuffersDrawTest, SkippedCommandKeepsItsOtherValues) {
    const DrawElementsIndirectCommand command{4, 2, 10, 5, 6};
    setCommands({command});
    const QVector<DrawElementsIndirectCommand> commands = _row->readBackCommands();
    ASSERT_EQ(commands.size(), 1);
    EXPECT_EQ(commands[0].count, 0U);
    EXPECT_EQ(commands[0].instanceCount, 2U);
    EXPECT_EQ(commands[0].firstIndex, 10U);
    EXPECT_EQ(commands[0].baseVertex, 5U);
    EXPECT_EQ(commands[0].baseInstance, 6U);
    EXPECT_EQ(_row->drawElementsIndirectCommands()[0].count, 4U)
        << "the commands as they were set are unchanged";
}

TEST_P(DrawBuffersDrawTest, WithoutIndicesEveryCommandIsSkipped) {
    _row->setIndexedDraw({}, 3 * kCells, GL_UNSIGNED_SHORT);
    EXPECT_EQ(_row->readBackCommands().first().count, 0U);
    EXPECT_THAT(_log.texts(QtWarningMsg),
                ElementsAre("4 of 4 draw commands reach beyond the 0 indices; they draw nothing"));
}

TEST_P(DrawBuffersDrawTest, CommandsSetAfterADrawAreDrawn) {
    EXPECT_EQ(drawn(), kAll);
    setCommands({cellCommand(2), cellCommand(0)});
    EXPECT_EQ(drawn(), (QVector<int>{1, -1, 0, -1}));
    EXPECT_EQ(_row->readBackCommands().size(), 2);
    setCommands({});
    EXPECT_EQ(drawn(), kNone);
    EXPECT_TRUE(_row->readBackCommands().isEmpty());
}

TEST_P(DrawBuffersDrawTest, IndicesSetAfterADrawAreUsed) {
    EXPECT_EQ(drawn(), kAll);
    const QVector<unsigned short> backwards = {9, 10, 11, 6, 7, 8, 3, 4, 5, 0, 1, 2};
    _row->setIndexedDraw(bufferOf(backwards), backwards.size(), GL_UNSIGNED_SHORT);
    EXPECT_EQ(drawn(), (QVector<int>{3, 2, 1, 0}));
    const QVector<unsigned int> words = {3, 4, 5, 0, 1, 2};
    _row->setIndexedDraw(bufferOf(words), words.size(), GL_UNSIGNED_INT);
    EXPECT_EQ(drawn(), (QVector<int>{1, 0, -1, -1}));
}

// The index count alone decides here, because the buffer holds enough indices.
TEST_P(DrawBuffersDrawTest, IndexCountSetAfterADrawIsUsed) {
    _row->setIndexedDraw(_row->indexBuffer(), 6, GL_UNSIGNED_SHORT);
    EXPECT_EQ(drawn(), (QVector<int>{0, 1, -1, -1}));
    _row->setIndexedDraw(_row->indexBuffer(), 12, GL_UNSIGNED_SHORT);
    EXPECT_EQ(drawn(), kAll);
}

TEST_P(DrawBuffersDrawTest, VertexArraySetAfterADrawIsUsed) {
    EXPECT_EQ(drawn(), kAll);
    const std::unique_ptr<DrawBuffers> other(triangleRow(2));
    _row->setVAO(other->VAO());
    EXPECT_EQ(drawn(), (QVector<int>{0, 0, 1, 1})) << "triangles of twice the width";
    _row->setVAO({});
    EXPECT_EQ(drawn(), kNone);
}

TEST_P(DrawBuffersDrawTest, EmptiedIndexBufferDrawsNothingUntilItIsFilledAgain) {
    EXPECT_EQ(drawn(), kAll);
    ASSERT_TRUE(_row->indexBuffer()->uploadGLushortData(nullptr, 0, GL_STATIC_DRAW));
    EXPECT_EQ(drawn(), kNone);
    const QVector<unsigned short> indices = shortIndices(3 * kCells);
    ASSERT_TRUE(_row->indexBuffer()->uploadGLushortData(indices.constData(), 12, GL_STATIC_DRAW));
    EXPECT_EQ(drawn(), kAll);
    EXPECT_THAT(_log.messages(), IsEmpty());
}

TEST_P(DrawBuffersDrawTest, CommandsAreCheckedAgainWhenTheIndexBufferChangesSize) {
    const QVector<unsigned short> indices = shortIndices(3 * kCells);
    EXPECT_EQ(drawn(), kAll);
    ASSERT_TRUE(_row->indexBuffer()->uploadGLushortData(indices.constData(), 6, GL_STATIC_DRAW));
    EXPECT_EQ(drawn(), (QVector<int>{0, 1, -1, -1}));
    EXPECT_EQ(drawn(), (QVector<int>{0, 1, -1, -1}));
    ASSERT_TRUE(_row->indexBuffer()->uploadGLushortData(indices.constData(), 12, GL_STATIC_DRAW));
    EXPECT_EQ(drawn(), kAll);
    EXPECT_THAT(_log.texts(QtWarningMsg),
                ElementsAre("2 of 4 draw commands reach beyond the 6 indices; they draw nothing"));
}

TEST_P(DrawBuffersDrawTest, EmptiedVertexBufferIsNotRead) {
    EXPECT_EQ(drawn(), kAll);
    const QSharedPointer<BufferObject> positions = _row->VAO()->streams()[0].buffer;
    ASSERT_TRUE(positions->uploadArbitraryData(nullptr, 0, GL_STATIC_DRAW, 4));
    EXPECT_EQ(drawn(), kNone);
}

TEST_P(DrawBuffersDrawTest, RestartIndexIsAVertexOfTriangles) {
    glEnable(GL_PRIMITIVE_RESTART);
    glPrimitiveRestartIndex(0);
    EXPECT_EQ(drawn(), kAll);
    glDisable(GL_PRIMITIVE_RESTART);
    EXPECT_THAT(_log.messages(), IsEmpty());
}

TEST_P(DrawBuffersDrawTest, FixedRestartIndexIsAVertexOfTriangles) {
    const QVector<unsigned char> last = {253, 254, 255};
    _row->setIndexedDraw(bufferOf(last), 3, GL_UNSIGNED_BYTE);
    setCommands({{3, 1, 0, static_cast<std::uint32_t>(-250), 0}});
    glEnable(GL_PRIMITIVE_RESTART_FIXED_INDEX);
    EXPECT_EQ(drawn(), (QVector<int>{-1, 0, -1, -1}));
    glDisable(GL_PRIMITIVE_RESTART_FIXED_INDEX);
}

TEST_P(DrawBuffersDrawTest, RestartIndexDividesAStrip) {
    const QVector<unsigned short> strips = {0, 1, 2, 9, 6, 7, 8};
    _row->setPrimitiveType(GL_TRIANGLE_STRIP);
    _row->setIndexedDraw(bufferOf(strips), strips.size(), GL_UNSIGNED_SHORT);
    setCommands({{7, 1, 0, 0, 0}});
    glEnable(GL_PRIMITIVE_RESTART);
    glPrimitiveRestartIndex(9);
    EXPECT_EQ(drawn(), (QVector<int>{0, -1, 0, -1}));
    glDisable(GL_PRIMITIVE_RESTART);
}

// OpenGL refuses some of these modes with the program of the test. Only the state in the draw counts.
TEST_P(DrawBuffersDrawTest, PrimitiveRestartIsOffForListsAlone) {
    struct Mode {
        GLenum name;
        bool isList;
    };
    constexpr Mode kModes[] = {{GL_POINTS, true},        {GL_LINES, true},
                               {GL_TRIANGLES, true},     {GL_LINES_ADJACENCY, true},
                               {GL_PATCHES, true},       {GL_TRIANGLES_ADJACENCY, true},
                               {GL_QUADS, true},         {GL_LINE_STRIP, false},
                               {GL_LINE_LOOP, false},    {GL_TRIANGLE_STRIP, false},
                               {GL_TRIANGLE_FAN, false}, {GL_LINE_STRIP_ADJACENCY, false},
                               {GL_QUAD_STRIP, false},   {GL_TRIANGLE_STRIP_ADJACENCY, false},
                               {GL_POLYGON, false}};
    for (const GLenum capability : {GL_PRIMITIVE_RESTART, GL_PRIMITIVE_RESTART_FIXED_INDEX})
        for (const Mode& mode : kModes) {
            _row->setPrimitiveType(mode.name);
            glEnable(capability);
            std::vector<bool> isEnabled;
            {
                const DrawHook hook([&] { isEnabled.push_back(glIsEnabled(capability) == GL_TRUE); });
                drawn(0, 1);
            }
            EXPECT_THAT(isEnabled, ElementsAre(!mode.isList)) << mode.name;
            EXPECT_TRUE(glIsEnabled(capability)) << mode.name;
            glDisable(capability);
        }
    takeSevereMessages();
    glGetError();
}

TEST_P(DrawBuffersDrawTest, PrimitiveRestartCostsTwoQueriesForListsAndNoneForStrips) {
    Framebuffer picture(QSize(4, 4));
    picture.begin();
    const auto calls = [this](GLenum mode) {
        _row->setPrimitiveType(mode);
        const AutoBinder binder(_program.get());
        _row->draw(0, kCells);
        const StateCalls counted;
        _row->draw(0, kCells);
        return counted.count();
    };
    EXPECT_EQ(calls(GL_TRIANGLES) - calls(GL_TRIANGLE_STRIP), 2);
}

TEST_P(DrawBuffersDrawTest, ErrorsAreQueriedAtTheFirstDrawOfEachCommand) {
    _row->VAO()->setLabel(QStringLiteral("row"));
    const auto warnings = [this](int first, int count) {
        const FaultyDriver driver(GLFault::NoMemoryForDrawing);
        _log.clear();
        drawn(first, count);
        return _log.texts(QtWarningMsg);
    };
    const QString warning = QStringLiteral("'row' could not be drawn (GL_OUT_OF_MEMORY)");
    EXPECT_THAT(warnings(0, 1), ElementsAre(warning));
    EXPECT_THAT(warnings(0, 1), IsEmpty());
    EXPECT_THAT(warnings(0, 2), ElementsAre(warning));
    EXPECT_THAT(warnings(1, 1), IsEmpty());
    EXPECT_THAT(warnings(0, 4), ElementsAre(warning));
    EXPECT_THAT(warnings(0, 4), IsEmpty());
    setCommands({cellCommand(0), cellCommand(1)});
    EXPECT_THAT(warnings(0, 1), ElementsAre(warning)) << "new commands are checked again";
    EXPECT_THAT(warnings(1, 1), ElementsAre(warning));
    EXPECT_THAT(warnings(0, 2), IsEmpty());
}

// The vertex array is bound in one context and cannot be made in another.
TEST_P(DrawBuffersDrawTest, FailedBindKeepsTheBindingsOfTheVertexArray) {
    OpenGLDeviceContext::HeadlessOptions sharedOptions = options();
    sharedOptions.shareWith = _context;
    const auto sharing = makeContext(sharedOptions);
    GLuint clients = 0;
    glGenVertexArrays(1, &clients);
    glBindVertexArray(clients);
    ASSERT_TRUE(_row->VAO()->bind());
    ASSERT_TRUE(sharing->makeCurrent());
    {
        const AutoBinder binder(_program.get());
        const FaultyDriver driver(GLFault::NoVertexArrays);
        _row->draw(0, 1);
    }
    ASSERT_TRUE(_context->makeCurrent());
    _row->VAO()->unbind();
    GLint bound = 0;
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &bound);
    EXPECT_EQ(GLuint(bound), clients);
    glBindVertexArray(0);
    glDeleteVertexArrays(1, &clients);
}

} // namespace Atelier::Vel::Testing
