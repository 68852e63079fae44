#pragma once

#include <cstdint>

#include <QtCore/QString>

namespace Atelier::Vel::Bench {

/// The result of a correct load of a file.
struct Expectation {
    std::uint64_t corners = 0;
    std::uint64_t vertices = 0;
    std::uint64_t triangles = 0;
    std::uint64_t checksum = 0; ///< of every buffer and every command
};

/// Loads `path` with plain and slow code: one line, one token, one table look-up at a time. Understands only
/// what the generated inputs use. The only code that it shares with the library is Triangulate3D.
Expectation loadPlainly(const QString& path);

/// The same, stored in a file beside `path` so that it is computed once.
Expectation expectationOf(const QString& path);

} // namespace Atelier::Vel::Bench
