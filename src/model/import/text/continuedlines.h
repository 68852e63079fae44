#pragma once

#include <iterator>

/// Lines that a backslash continues, in bytes or characters.
namespace Atelier::Vel {

/// Between joined lines.
constexpr char kJoint = ' ';

template<typename Character>
bool isBlank(Character character) {
    return character == Character(' ') || (character >= Character('\t') && character < Character('\r'));
}

/// Whether a word may begin at `at`. Carriage returns do not count.
template<typename Character>
bool isAfterBlank(const Character* first, const Character* at) {
    while (at != first && at[-1] == Character('\r'))
        --at;
    return at == first || isBlank(at[-1]);
}

/// Whether the line from `first` to its line feed at `last` ends with a backslash and has no comment.
template<typename Character>
bool isContinued(const Character* first, const Character* last) {
    while (last != first && last[-1] == Character('\r'))
        --last;
    if (last == first || last[-1] != Character('\\'))
        return false;
    for (const Character* at = first; at != last; ++at)
        if (*at == Character('#') && isAfterBlank(first, at))
            return false;
    return true;
}

/// Replaces the backslash and the line feed between joined lines. Returns: the new end.
template<typename Iterator>
Iterator joinLines(Iterator first, Iterator last) {
    using Character = typename std::iterator_traits<Iterator>::value_type;
    Iterator to = first;
    for (; first != last; ++first, ++to) {
        const bool isJoint = *first == Character('\\') && first + 1 != last && first[1] == Character('\n');
        *to = isJoint ? Character(kJoint) : *first;
        first += isJoint ? 1 : 0;
    }
    return to;
}

/// Finds out whether a line is continued, from pieces of it.
class ContinuationScan {
public:
    /// Takes the next character of a line. A line feed begins the next one.
    template<typename Character>
    void take(Character character);
    /// Whether the line is continued if it ends here.
    bool isContinued() const { return _endsWithBackslash && !_hasComment; }

private:
    bool _isAfterBlank = true;
    bool _hasComment = false;
    bool _endsWithBackslash = false;
};

template<typename Character>
void ContinuationScan::take(Character character) {
    if (character == Character('\r'))
        return;
    if (character == Character('\n')) {
        *this = ContinuationScan();
        return;
    }
    _hasComment = _hasComment || (_isAfterBlank && character == Character('#'));
    _isAfterBlank = isBlank(character);
    _endsWithBackslash = character == Character('\\');
}

} // namespace Atelier::Vel
