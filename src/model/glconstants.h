#pragma once

namespace Atelier::Vel {

// The OpenGL constants that VelModel uses. This file includes no OpenGL header, so that clients may include
// theirs in any order.

// Types of vertex data.
constexpr unsigned int kGlByte = 0x1400;          // GL_BYTE
constexpr unsigned int kGlUnsignedByte = 0x1401;  // GL_UNSIGNED_BYTE
constexpr unsigned int kGlShort = 0x1402;         // GL_SHORT
constexpr unsigned int kGlUnsignedShort = 0x1403; // GL_UNSIGNED_SHORT
constexpr unsigned int kGlInt = 0x1404;           // GL_INT
constexpr unsigned int kGlUnsignedInt = 0x1405;   // GL_UNSIGNED_INT, the type of all index streams
constexpr unsigned int kGlFloat = 0x1406;         // GL_FLOAT
constexpr unsigned int kGlDouble = 0x140A;        // GL_DOUBLE
constexpr unsigned int kGlHalfFloat = 0x140B;     // GL_HALF_FLOAT

// Buffers.
constexpr unsigned int kGlArrayBuffer = 0x8892;        // GL_ARRAY_BUFFER
constexpr unsigned int kGlElementArrayBuffer = 0x8893; // GL_ELEMENT_ARRAY_BUFFER

// Textures. Parameter values are signed, because the functions that take them expect signed values.
constexpr unsigned int kGlTexture2D = 0x0DE1;       // GL_TEXTURE_2D
constexpr unsigned int kGlMaxTextureSize = 0x0D33;  // GL_MAX_TEXTURE_SIZE
constexpr unsigned int kGlUnpackAlignment = 0x0CF5; // GL_UNPACK_ALIGNMENT
constexpr int kGlRgba = 0x1908;                     // GL_RGBA
constexpr unsigned int kGlBgra = 0x80E1;            // GL_BGRA
constexpr unsigned int kGlMagFilter = 0x2800;       // GL_TEXTURE_MAG_FILTER
constexpr unsigned int kGlMinFilter = 0x2801;       // GL_TEXTURE_MIN_FILTER
constexpr unsigned int kGlWrapS = 0x2802;           // GL_TEXTURE_WRAP_S
constexpr unsigned int kGlWrapT = 0x2803;           // GL_TEXTURE_WRAP_T
constexpr unsigned int kGlBaseLevel = 0x813C;       // GL_TEXTURE_BASE_LEVEL
constexpr unsigned int kGlMaxLevel = 0x813D;        // GL_TEXTURE_MAX_LEVEL
constexpr int kGlLinear = 0x2601;                   // GL_LINEAR
constexpr int kGlLinearMipmapLinear = 0x2703;       // GL_LINEAR_MIPMAP_LINEAR
constexpr int kGlRepeat = 0x2901;                   // GL_REPEAT
constexpr int kGlSrgb8Alpha8 = 0x8C43;              // GL_SRGB8_ALPHA8

// The anisotropic filter: of a texture, and the maximum of the driver.
constexpr unsigned int kGlTextureAnisotropy = 0x84FE; // GL_TEXTURE_MAX_ANISOTROPY
constexpr unsigned int kGlMaxAnisotropy = 0x84FF;     // GL_MAX_TEXTURE_MAX_ANISOTROPY

// The version and the extensions of a context.
constexpr unsigned int kGlMajorVersion = 0x821B;  // GL_MAJOR_VERSION
constexpr unsigned int kGlMinorVersion = 0x821C;  // GL_MINOR_VERSION
constexpr unsigned int kGlExtensions = 0x1F03;    // GL_EXTENSIONS
constexpr unsigned int kGlNumExtensions = 0x821D; // GL_NUM_EXTENSIONS

} // namespace Atelier::Vel
