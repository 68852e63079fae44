#include "check/skippedkeywords.h"

#include <algorithm>
#include <iterator>

namespace Atelier::Vel {

namespace {

struct KnownKeyword {
    const char* name;
    const char* purpose;
};

constexpr KnownKeyword kObjKeywords[] = {
    {"l", "lines"},
    {"p", "points"},
    {"s", "smoothing groups"},
    {"vp", "points of parameter spaces"},
    {"cstype", "free-form geometry"},
    {"deg", "free-form geometry"},
    {"bmat", "free-form geometry"},
    {"step", "free-form geometry"},
    {"curv", "free-form curves"},
    {"curv2", "free-form curves"},
    {"surf", "free-form surfaces"},
    {"parm", "free-form geometry"},
    {"trim", "free-form geometry"},
    {"hole", "free-form geometry"},
    {"scrv", "free-form geometry"},
    {"sp", "free-form geometry"},
    {"end", "free-form geometry"},
    {"con", "free-form geometry"},
    {"mg", "merging groups"},
    {"bevel", "bevel interpolation"},
    {"c_interp", "colour interpolation"},
    {"d_interp", "opacity interpolation"},
    {"lod", "levels of detail"},
    {"maplib", "map libraries"},
    {"usemap", "maps"},
    {"shadow_obj", "shadow objects"},
    {"trace_obj", "ray-tracing objects"},
    {"ctech", "approximation of curves"},
    {"stech", "approximation of surfaces"},
    {"call", "other files"},
    {"csh", "shell commands"},
};

constexpr KnownKeyword kMtlKeywords[] = {
    {"map_d", "maps of opacity"},
    {"map_bump", "bump maps"},
    {"map_Bump", "bump maps"},
    {"bump", "bump maps"},
    {"disp", "displacement"},
    {"map_disp", "displacement"},
    {"decal", "decals"},
    {"refl", "reflection maps"},
    {"map_refl", "reflection maps"},
    {"map_Tr", "maps of opacity"},
    {"Ps", "sheen"},
    {"map_Ps", "sheen"},
    {"Pc", "clear coats"},
    {"Pcr", "clear coats"},
    {"aniso", "anisotropy"},
    {"anisor", "anisotropy"},
    {"map_aat", "antialiasing"},
    {"map_Pc", "clear coats"},
};

// They do not change what is drawn without ray tracing, and ordinary files have them.
constexpr const char* kIrrelevantMtlKeywords[] = {"Ni", "Tf", "sharpness", "Km"};

template<std::size_t N>
QString purposeAmong(const KnownKeyword (&keywords)[N], const QString& keyword) {
    const auto* const found =
        std::find_if(std::begin(keywords), std::end(keywords),
                     [&keyword](const KnownKeyword& known) { return keyword == QLatin1String(known.name); });
    return found == std::end(keywords) ? QString() : QString::fromLatin1(found->purpose);
}

QString skipped(quint64 lines) {
    return lines == 1 ? QStringLiteral("1 line is skipped")
                      : QStringLiteral("%1 lines are skipped").arg(lines);
}

} // namespace

void SkippedKeywords::add(const QString& keyword, const FindingPlace& place) {
    auto index = _indices.constFind(keyword);
    if (index == _indices.constEnd()) {
        if (_keywords.size() == kMaxKeywords) {
            ++_uncounted;
            return;
        }
        index = _indices.insert(keyword, _keywords.size());
        _keywords.append({keyword, place, 0});
    }
    ++_keywords[*index].lines;
}

void SkippedKeywords::report(FindingLog& log, QString (*purposeOf)(const QString& keyword)) const {
    for (const Keyword& keyword : _keywords) {
        const QString purpose = purposeOf(keyword.name);
        const CheckCode code = purpose.isNull() ? CheckCode::KeywordUnknown : CheckCode::KeywordSkipped;
        const auto describe = [&](CheckFinding& finding) {
            finding.text = keyword.name;
            finding.message =
                purpose.isNull()
                    ? QStringLiteral("'%1' is not a keyword: %2").arg(keyword.name, skipped(keyword.lines))
                    : QStringLiteral("'%1' (%2) has no effect: %3")
                          .arg(keyword.name, purpose, skipped(keyword.lines));
        };
        log.add(code, keyword.place, describe, keyword.lines);
    }
}

QString purposeOfObjKeyword(const QString& keyword) {
    return purposeAmong(kObjKeywords, keyword);
}

QString purposeOfMtlKeyword(const QString& keyword) {
    return purposeAmong(kMtlKeywords, keyword);
}

bool isIrrelevantMtlKeyword(const QString& keyword) {
    return std::any_of(std::begin(kIrrelevantMtlKeywords), std::end(kIrrelevantMtlKeywords),
                       [&keyword](const char* known) { return keyword == QLatin1String(known); });
}

} // namespace Atelier::Vel
