#pragma once

#include <algorithm>
#include <iterator>

#include <QtCore/QString>

namespace Atelier::Vel {

/// The texture maps of a material that are plain white. A texture needs a GL context, so the upload makes it.
class WhiteMaps {
public:
    static constexpr const char* kNames[] = {"map_Ka", "map_Kd", "map_Ks", "map_Ns",
                                             "map_Ke", "map_Pr", "map_Pm", "norm"};

    bool isEmpty() const { return _maps == 0; }
    /// Requires: `name` is one of kNames.
    void set(const QString& name, bool isWhite) {
        const auto bit = static_cast<unsigned char>(1U << numberOf(name));
        _maps = static_cast<unsigned char>(isWhite ? _maps | bit : _maps & ~bit);
    }
    template<typename Take>
    void forEach(const Take& take) const {
        for (unsigned int number = 0; number < std::size(kNames); ++number)
            if ((_maps >> number & 1U) != 0)
                take(QString::fromLatin1(kNames[number]));
    }

private:
    static unsigned int numberOf(const QString& name) {
        const auto* const found =
            std::find_if(std::begin(kNames), std::end(kNames),
                         [&name](const char* known) { return name == QLatin1String(known); });
        return static_cast<unsigned int>(found - std::begin(kNames));
    }

    unsigned char _maps = 0; ///< one bit for each name
};

} // namespace Atelier::Vel
