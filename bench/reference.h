#pragma once

#include <cstdint>

#include <QtCore/QString>

namespace Atelier::Vel::Bench {

/// What a right load of a file gives.
struct Expectation {
    std::uint64_t corners = 0;
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint64_t checksum = 0; ///< of every buffer and every command
};

/// Loads `path` the plain and slow way: a line, a token, a table look-up at a time. Knows what the generated
/// inputs use and no more. Shares Triangulate3D and nothing else with what it is the measure of.
Expectation loadPlainly(const QString& path);

/// The same, kept in a file beside `path` so that it is worked out once.
Expectation expectationOf(const QString& path);

} // namespace Atelier::Vel::Bench
