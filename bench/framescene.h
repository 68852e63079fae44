#pragma once

#include <memory>
#include <vector>

#include <velgl/gpumodel.h>
#include <velgl/program.h>
#include <velgl/texture.h>

namespace Atelier::Vel::Bench {

/// A frame to be measured. Command i draws a triangle in cell i of a square grid, with texture i modulo
/// `textures`.
struct FrameCase {
    const char* name;
    int commands;
    int textures;

    /// The cells in a row of the grid.
    int side() const;
};

/// A pixel or texel, as GL_RGBA and GL_UNSIGNED_BYTE.
struct FramePixel {
    unsigned char red = 0;
    unsigned char green = 0;
    unsigned char blue = 0;
    unsigned char alpha = 0;

    bool operator==(const FramePixel& other) const {
        return red == other.red && green == other.green && blue == other.blue && alpha == other.alpha;
    }
};

/// Returns: what a command paints: red and green depend on its texture, blue on its material.
FramePixel paintedPixel(int command, int texture);

/// The geometry of every command: it covers the centre of its cell and no other, in units of a cell.
constexpr float kFrameTriangle[] = {0, 0, 1.4F, 0, 0, 1.4F};
constexpr unsigned short kFrameIndices[] = {0, 1, 2};

/// The model of a case, with its textures and its program.
/// Requires: a current context, and that registerFramePlans() was called. Ends the process on failure.
struct FrameScene {
    explicit FrameScene(const FrameCase& measured);

    std::unique_ptr<Program> program;
    std::vector<std::unique_ptr<Texture>> textures;
    GPUModel model;
};

/// Registers the plans of the materials and instances.
void registerFramePlans();

/// Prints the reason and ends the process.
[[noreturn]] void failFrames(const char* reason);

} // namespace Atelier::Vel::Bench
