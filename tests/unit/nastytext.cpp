#include "nastytext.h"

#include <QtCore/QString>
#include <QtCore/QTextCodec>

namespace Atelier::Vel::Testing {

unsigned int NastyText::below(unsigned int bound) {
    return std::uniform_int_distribution<unsigned int>(0, bound - 1)(_random);
}

QByteArray NastyText::anyOf(std::initializer_list<const char*> choices) {
    return *(choices.begin() + below(static_cast<unsigned int>(choices.size())));
}

// No-break space, next line, en quad, ideographic space, Mongolian separator, BOM, control separators.
QByteArray NastyText::separator() {
    if (below(6) != 0)
        return " ";
    return anyOf({"  ", "\t", " \t ", "\v", "\f", "\r", "\xC2\xA0", "\xC2\x85", "\xE2\x80\x80",
                  "\xE3\x80\x80", "\xE2\x80\xA8", "\xE1\xA0\x8E", "\xEF\xBB\xBF", "\x1C", "\x1F",
                  "\xE2\x80\x8B"});
}

QByteArray NastyText::lineEnd() {
    return below(8) != 0
               ? QByteArray("\n")
               : anyOf({"\r\n", "\r", "\n\n", "\r\r\n", "\n\r", "\xE2\x80\xA8", "\xC2\x85", " \n", "\f\n"});
}

QByteArray NastyText::number() {
    switch (below(4)) {
    case 0:
        return QByteArray::number(static_cast<int>(below(20000)) - 10000);
    case 1:
        return QByteArray::number((static_cast<double>(below(2000001)) - 1000000.0) / 1000.0, 'f',
                                  static_cast<int>(below(9)));
    case 2:
        return QByteArray::number(static_cast<double>(_random()) / 7.0, "efg"[below(3)],
                                  static_cast<int>(below(18)));
    default:
        return anyOf({"0",
                      "-0",
                      "+1",
                      "1.",
                      ".5",
                      ".",
                      "-",
                      "1e5",
                      "1e-5",
                      "1e",
                      "1e400",
                      "-1e-400",
                      "1e-40",
                      "3.4028235e38",
                      "nan",
                      "+nan",
                      "inf",
                      "-INF",
                      "infinity",
                      "0x10",
                      "1,5",
                      "1.0abc",
                      "1-2-3",
                      "12345678",
                      "123456789",
                      "1234567890",
                      "0.12345678",
                      "0.123456789012345678",
                      "9007199254740993",
                      "\342\210\2221.5",
                      "\xD9\xA1",
                      "\xEF\xBC\x91",
                      "1\xC3\xA9",
                      "00000000000000000001",
                      "#",
                      "\\"});
    }
}

QByteArray NastyText::corner() {
    const auto index = [this] {
        return QByteArray::number(static_cast<int>(below(12)) - (below(3) == 0 ? 6 : 0));
    };
    switch (below(7)) {
    case 0:
        return index();
    case 1:
        return index() + "/" + index();
    case 2:
        return index() + "//" + index();
    case 3:
    case 4:
        return index() + "/" + index() + "/" + index();
    case 5:
        return QByteArray::number(below(4'000'000'000U)) + "/" + QByteArray::number(below(100'000'000));
    default:
        return anyOf({"1/",
                      "1//",
                      "/1",
                      "1/2/3/4",
                      "1/2/3/",
                      "+1",
                      "--1",
                      "-0",
                      "3#x",
                      "#note",
                      "x",
                      "\\",
                      "1/x",
                      "1//x",
                      "2147483647",
                      "2147483648",
                      "-2147483648",
                      "-2147483649",
                      "\342\210\2221",
                      "1.0",
                      "1e1",
                      "00000000001",
                      "1/\xC2\xA0/2",
                      "12345678/12345678/12345678",
                      "1234567/7654321/1",
                      "//"});
    }
}

QList<QByteArray> NastyText::names() {
    return {"red",
            "blue",
            "<default>",
            "r\303\251d",
            "\xE8\xB5\xA4",
            "a/../b.png",
            "/abs/m.mtl",
            "sub/lib.mtl",
            "red#1",
            "# red",
            "",
            "a b",
            "\xF0\x9F\x98\x80",
            "-s 1 1 1 file.png",
            "C:\\x.png",
            "\xEF\xBB\xBFred"};
}

QByteArray NastyText::name() {
    const QList<QByteArray> all = names();
    return all[static_cast<int>(below(static_cast<unsigned int>(all.size())))];
}

// Lines as programs write them.
QByteArray NastyText::plainColour() {
    QByteArray text;
    for (unsigned int i = below(2) == 0 ? 0 : 3 + below(2); i > 0; --i)
        text +=
            ' ' + (below(4) == 0 ? QByteArray::number(below(256))
                                 : QByteArray::number(below(1000) / 999.0, 'f', static_cast<int>(below(13))));
    return text;
}

QByteArray NastyText::plainLine() {
    const auto decimal = [this] {
        return QByteArray::number((static_cast<double>(below(2'000'000'001)) - 1e9) / 1e7, 'f',
                                  static_cast<int>(below(13)));
    };
    const auto index = [this] {
        return QByteArray::number(static_cast<int>(below(below(2) == 0 ? 20 : 20'000'000)) -
                                  (below(9) == 0 ? 10 : 0));
    };
    switch (below(5)) {
    case 0:
        return "v " + decimal() + " " + decimal() + " " + decimal() + plainColour();
    case 1:
        return "vn " + decimal() + " " + decimal() + " " + decimal();
    case 2:
        return "vt " + decimal() + " " + decimal();
    default:
        break;
    }
    QByteArray line = "f";
    const unsigned int form = below(4);
    for (unsigned int i = below(20) == 0 ? below(90) : 3 + below(3); i > 0; --i)
        line += " " + index() +
                (form == 0   ? ""
                 : form == 1 ? "/" + index()
                 : form == 2 ? "//" + index()
                             : "/" + index() + "/" + index());
    return line;
}

QByteArray NastyText::objLine() {
    if (below(2) == 0)
        return plainLine() + (below(10) == 0
                                  ? anyOf({" ", "  ", " 1", " # note", "\t", "x", "/", "\r", " \r"})
                                  : QByteArray());
    static const char* const kKeywords[] = {"v", "v", "v", "vn", "vt", "f",  "f", "f", "usemtl", "mtllib",
                                            "o", "g", "s", "#",  "V",  "vp", "l", "",  "#f",     "v#"};
    const QByteArray keyword = kKeywords[below(20)];
    QByteArray line = (below(8) == 0 ? separator() : QByteArray()) + keyword;
    const bool face = keyword == "f";
    const bool named = keyword == "usemtl" || keyword == "mtllib" || keyword == "g";
    const unsigned int usual = keyword == "vt" ? 2 : 3;
    const unsigned int count = below(4) != 0 ? usual : below(8);
    for (unsigned int i = 0; i < count; ++i)
        line += separator() + (face ? corner() : named ? name() : number());
    return line + (below(10) == 0
                       ? anyOf({" ", "\t", " # note", "#", " \\", QByteArray("\xE2\x98\x83").constData()})
                       : QByteArray());
}

QByteArray NastyText::mtlLine() {
    QByteArray line =
        (below(8) == 0 ? separator() : QByteArray()) +
        anyOf({"newmtl", "newmtl", "Ka", "Kd", "Kd",    "Ks", "Ns",   "d", "map_Kd", "map_Ks",
               "map_Ka", "map_Ns", "Ke", "kd", "illum", "#",  "# Kd", "",  "Kd#",    "map_Kd#"});
    const bool named = line.contains("map") || line.contains("mtl");
    for (unsigned int i = below(5); i > 0; --i)
        line += separator() + (named ? name() : number());
    return line + (below(8) == 0 ? anyOf({" ", "#", " # note", "\t"}) : QByteArray());
}

QByteArray NastyText::obj(unsigned int lines) {
    QByteArray text;
    for (unsigned int i = below(lines + 1); i > 0; --i)
        text += objLine() + lineEnd();
    if (below(3) == 0)
        text += objLine();
    return text;
}

QByteArray NastyText::plain(unsigned int lines) {
    QByteArray text;
    for (unsigned int i = below(lines + 1); i > 0; --i)
        text += plainLine() + "\n";
    return text;
}

QByteArray NastyText::decimal() {
    QByteArray text = below(2) == 0 ? "-" : "";
    for (unsigned int i = 1 + below(8); i > 0; --i)
        text += static_cast<char>('0' + below(10));
    if (below(8) != 0)
        text += '.';
    for (unsigned int i = below(14); i > 0 && text.contains('.'); --i)
        text += static_cast<char>('0' + below(10));
    return text;
}

QByteArray NastyText::mtl(unsigned int lines) {
    QByteArray text;
    for (unsigned int i = below(lines + 1); i > 0; --i)
        text += mtlLine() + lineEnd();
    if (below(3) == 0)
        text += mtlLine();
    return text;
}

// Mostly bytes with a meaning in some context.
QByteArray NastyText::noise(unsigned int bytes) {
    static const char kFavouriteBytes[] =
        "\n\n\r \t\0#/v f-+.0123456789e\xC2\xA0\x85\xE2\x80\xE3\xEF\xBB\xBF\xFE\xFF\xF0\x9F";
    static const QByteArray kFavourites(kFavouriteBytes, sizeof kFavouriteBytes - 1);
    QByteArray text;
    for (unsigned int i = below(bytes + 1); i > 0; --i)
        text += below(3) == 0
                    ? static_cast<char>(below(256))
                    : kFavourites.at(static_cast<int>(below(static_cast<unsigned int>(kFavourites.size()))));
    return text;
}

QByteArray NastyText::foreign(unsigned int pieces) {
    QByteArray text;
    for (unsigned int i = below(pieces + 1); i > 0; --i)
        text +=
            anyOf({"\xC3", "\xA9", "\xC3\xA9", "\xE2", "\xE2\x98", "\xE2\x98\x83", "\xF0\x9F", "\xF0\x9F\x98",
                   "\xF0\x9F\x98\x80", "\x80", "\xFF", "\xEF\xBB\xBF", "\xED\xA0\x80", "x", "\r", "\n"});
    return text;
}

QByteArray NastyText::damaged(QByteArray text) {
    for (unsigned int i = below(8); i > 0; --i) {
        const int at = static_cast<int>(below(static_cast<unsigned int>(text.size()) + 1));
        switch (below(3)) {
        case 0:
            text.remove(at, static_cast<int>(below(4)));
            break;
        case 1:
            text.insert(at, noise(4));
            break;
        default:
            text.replace(at, 1, noise(1));
        }
    }
    return text;
}

QByteArray NastyText::encoded(const QByteArray& utf8) {
    static const char* const kCodecs[] = {"UTF-8",    "UTF-16LE", "UTF-16BE",
                                          "UTF-32LE", "UTF-32BE", "ISO-8859-1"};
    QTextCodec* codec = QTextCodec::codecForName(kCodecs[below(6)]);
    QTextCodec::ConverterState state(below(4) == 0 ? QTextCodec::IgnoreHeader
                                                   : QTextCodec::DefaultConversion);
    const QString text = QString::fromUtf8(utf8);
    return codec->fromUnicode(text.constData(), text.size(), &state);
}

} // namespace Atelier::Vel::Testing
