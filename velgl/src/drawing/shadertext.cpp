#include "drawing/shadertext.h"

namespace Atelier::Vel {

namespace {

const char kByteOrderMark[] = "\xEF\xBB\xBF";

/// Walks over the lines of a shader. Lines that end with a backslash continue, and count as one.
class ShaderLines {
public:
    explicit ShaderLines(const QByteArray& source) : _source(source) {}

    /// Where the next line begins, and its number, from 1.
    int position() const { return _position; }
    int number() const { return _number; }
    bool atEnd() const { return _position >= _source.size(); }

    /// Returns: the code of the next line, without comments and white space around it.
    QByteArray next() {
        QByteArray code;
        while (!atEnd()) {
            const char character = _source[_position];
            if (character == '\n' && !_isInComment && !endsWithBackslash())
                break;
            step(code);
        }
        if (!atEnd())
            advance(1); // over the line break
        return code.trimmed();
    }

private:
    bool startsWith(const char* pair) const {
        return _position + 1 < _source.size() && _source[_position] == pair[0] &&
               _source[_position + 1] == pair[1];
    }

    bool endsWithBackslash() const {
        const int before = _position - (_position > 0 && _source[_position - 1] == '\r' ? 2 : 1);
        return before >= 0 && _source[before] == '\\';
    }

    void advance(int count) {
        for (; count > 0 && !atEnd(); --count)
            if (_source[_position++] == '\n')
                ++_number;
    }

    void step(QByteArray& code) {
        if (_isInComment) {
            _isInComment = !startsWith("*/");
            advance(_isInComment ? 1 : 2);
        } else if (startsWith("/*")) {
            _isInComment = true;
            code.append(' ');
            advance(2);
        } else if (startsWith("//")) {
            while (!atEnd() && (_source[_position] != '\n' || endsWithBackslash()))
                advance(1);
        } else {
            code.append(_source[_position]);
            advance(1);
        }
    }

    const QByteArray& _source;
    int _position = 0;
    int _number = 1;
    bool _isInComment = false;
};

// Returns: the word behind the '#' of a directive; empty for other code.
QByteArray directive(const QByteArray& code) {
    if (!code.startsWith('#'))
        return {};
    QByteArray word;
    for (const char character : code.mid(1).trimmed()) {
        if (character < 'a' || character > 'z')
            break;
        word.append(character);
    }
    return word;
}

struct Place {
    int position = -1; ///< -1 if there is none
    int line = 1;      ///< the number of the line that begins there
};

// The place behind the #version line and the last #extension before code, outside of every #if.
Place placeOfDeclarations(const QByteArray& source) {
    ShaderLines lines(source);
    QByteArray code;
    while (code.isEmpty() && !lines.atEnd())
        code = lines.next();
    if (directive(code) != "version")
        return {};
    Place place{lines.position(), lines.number()};
    int depth = 0;
    bool isExtensionPassed = false;
    while (!lines.atEnd()) {
        code = lines.next();
        const QByteArray word = directive(code);
        if (!code.isEmpty() && !code.startsWith('#'))
            break;
        depth += int(word.startsWith("if")) - int(word == "endif");
        isExtensionPassed = isExtensionPassed || word == "extension";
        if (depth == 0 && isExtensionPassed) {
            place = {lines.position(), lines.number()};
            isExtensionPassed = false;
        }
    }
    return place;
}

QByteArray lineDirective(int line, int source) {
    return "#line " + QByteArray::number(line) + ' ' + QByteArray::number(source) + '\n';
}

} // namespace

QByteArray withDeclarations(const QByteArray& source, const QByteArray& declarations) {
    const QByteArray plain = source.startsWith(kByteOrderMark) ? source.mid(3) : source;
    const Place place = placeOfDeclarations(plain);
    if (place.position < 0)
        return {};
    const QByteArray head = plain.left(place.position);
    const QByteArray lineBreak = head.endsWith('\n') ? "" : "\n";
    return head + lineBreak + lineDirective(1, 1) + declarations + lineDirective(place.line, 0) +
           plain.mid(place.position);
}

} // namespace Atelier::Vel
