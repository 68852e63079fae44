#include <epoxy/gl.h>

#include <velgl/renderstate.h>

#include "clientstate.h"
#include "support/glfixture.h"

namespace Atelier::Vel::Testing {

namespace {

class RenderStateTest : public GLFixture {};

GLint integer(GLenum query) {
    GLint values[2] = {-1, -1}; // drivers may give one polygon mode for each side
    glGetIntegerv(query, values);
    return values[0];
}

GLint integerAt(GLenum query, GLuint index) {
    GLint value = -1;
    glGetIntegeri_v(query, index, &value);
    return value;
}

} // namespace

TEST_F(RenderStateTest, DefaultDrawsSolidOpaqueSurfaces) {
    const BusyPainter painter;
    const ScopedRenderState state;
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_EQ(integer(GL_DEPTH_FUNC), GL_LEQUAL);
    EXPECT_EQ(integer(GL_DEPTH_WRITEMASK), GL_TRUE);
    EXPECT_EQ(integer(GL_POLYGON_MODE), GL_FILL);
    EXPECT_TRUE(glIsEnabled(GL_MULTISAMPLE));
    for (const GLenum capability :
         {GL_CULL_FACE, GL_STENCIL_TEST, GL_COLOR_LOGIC_OP, GL_RASTERIZER_DISCARD, GL_SCISSOR_TEST})
        EXPECT_FALSE(glIsEnabled(capability)) << capability;
    for (GLuint output = 0; output < 8; ++output) {
        EXPECT_FALSE(glIsEnabledi(GL_BLEND, output)) << output;
        GLboolean mask[4] = {};
        glGetBooleani_v(GL_COLOR_WRITEMASK, output, mask);
        EXPECT_TRUE(mask[0] && mask[1] && mask[2] && mask[3]) << output;
    }
}

TEST_F(RenderStateTest, EachTestOfDepthsIsThatOfOpenGL) {
    using Depths = RenderState::DepthTest;
    const std::pair<Depths, GLint> tests[] = {{Depths::Less, GL_LESS},
                                              {Depths::LessOrEqual, GL_LEQUAL},
                                              {Depths::Equal, GL_EQUAL},
                                              {Depths::GreaterOrEqual, GL_GEQUAL},
                                              {Depths::Greater, GL_GREATER}};
    RenderState state;
    for (const auto& [test, function] : tests) {
        state.depthTest = test;
        const ScopedRenderState scope(state);
        EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
        EXPECT_EQ(integer(GL_DEPTH_FUNC), function);
    }
    state.depthTest = Depths::Off;
    state.writesDepth = false;
    const ScopedRenderState scope(state);
    EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_EQ(integer(GL_DEPTH_WRITEMASK), GL_FALSE);
}

TEST_F(RenderStateTest, SidesThatAreNotDrawnAreCulled) {
    RenderState state;
    state.sides = RenderState::Sides::Front;
    {
        const ScopedRenderState scope(state);
        EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
        EXPECT_EQ(integer(GL_CULL_FACE_MODE), GL_BACK);
    }
    state.sides = RenderState::Sides::Back;
    const ScopedRenderState scope(state);
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    EXPECT_EQ(integer(GL_CULL_FACE_MODE), GL_FRONT);
}

TEST_F(RenderStateTest, TrianglesAreFilledAsAsked) {
    RenderState state;
    for (const auto& [fill, mode] :
         {std::pair(RenderState::Fill::Lines, GL_LINE), std::pair(RenderState::Fill::Points, GL_POINT),
          std::pair(RenderState::Fill::Solid, GL_FILL)}) {
        state.fill = fill;
        const ScopedRenderState scope(state);
        EXPECT_EQ(integer(GL_POLYGON_MODE), mode);
    }
}

TEST_F(RenderStateTest, EachOutputIsBlendedOnItsOwn) {
    using Factor = RenderState::Factor;
    const BusyPainter painter;
    RenderState state;
    state.blends = {{},
                    {Factor::One, Factor::OneMinusSourceAlpha},
                    {Factor::Zero, Factor::OneMinusSourceColor},
                    {Factor::SourceAlpha, Factor::One},
                    {Factor::SourceColor, Factor::Zero}};
    const ScopedRenderState scope(state);
    constexpr GLint kFactors[][2] = {{GL_ONE, GL_ZERO},
                                     {GL_ONE, GL_ONE_MINUS_SRC_ALPHA},
                                     {GL_ZERO, GL_ONE_MINUS_SRC_COLOR},
                                     {GL_SRC_ALPHA, GL_ONE},
                                     {GL_SRC_COLOR, GL_ZERO}};
    EXPECT_FALSE(glIsEnabledi(GL_BLEND, 0));
    EXPECT_FALSE(glIsEnabledi(GL_BLEND, 5));
    for (GLuint output = 1; output < 5; ++output) {
        EXPECT_TRUE(glIsEnabledi(GL_BLEND, output));
        for (const GLenum query : {GL_BLEND_SRC_RGB, GL_BLEND_SRC_ALPHA})
            EXPECT_EQ(integerAt(query, output), kFactors[output][0]) << output;
        for (const GLenum query : {GL_BLEND_DST_RGB, GL_BLEND_DST_ALPHA})
            EXPECT_EQ(integerAt(query, output), kFactors[output][1]) << output;
        for (const GLenum query : {GL_BLEND_EQUATION_RGB, GL_BLEND_EQUATION_ALPHA})
            EXPECT_EQ(integerAt(query, output), GL_FUNC_ADD) << output;
    }
}

TEST_F(RenderStateTest, EndOfTheScopeRestoresWhatTheClientHadSet) {
    RenderState wires;
    wires.fill = RenderState::Fill::Lines;
    wires.sides = RenderState::Sides::Front;
    wires.depthTest = RenderState::DepthTest::Off;
    wires.blends.fill({RenderState::Factor::SourceAlpha, RenderState::Factor::One}, 20);
    const BusyClient client;
    const BusyPainter painter;
    const ClientState before = ClientState::captured();
    {
        const ScopedRenderState outer;
        const ClientState between = ClientState::captured();
        {
            const ScopedRenderState inner(wires);
            EXPECT_NE(ClientState::difference(between, ClientState::captured()), "");
        }
        EXPECT_EQ(ClientState::difference(between, ClientState::captured()), "");
    }
    EXPECT_EQ(ClientState::difference(before, ClientState::captured()), "");
}

TEST_F(RenderStateTest, NothingHappensInAnotherContextOrWithoutOne) {
    const auto other = makeContext(options());
    const BusyPainter painter;
    auto state = std::make_unique<ScopedRenderState>();
    other->makeCurrent();
    state.reset();
    EXPECT_FALSE(glIsEnabled(GL_BLEND)) << "the first context has blending enabled";
    other->doneCurrent();
    { const ScopedRenderState none; }
    _context->makeCurrent();
}

} // namespace Atelier::Vel::Testing
