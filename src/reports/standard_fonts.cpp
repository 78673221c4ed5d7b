#include "reports/standard_fonts.h"

#include <array>

namespace cvd::reports {

namespace {

// The advances of the characters 32 to 255 of WinAnsiEncoding, from the fonts' published metrics; 0 where the
// encoding leaves the code unassigned.
constexpr std::array<short, 224> kRegular{
    278,  278, 355, 556,  556, 889, 667, 191, 333, 333, 389, 584,  278, 333, 278,  278, 556,  556,  556, 556,  556,
    556,  556, 556, 556,  556, 278, 278, 584, 584, 584, 556, 1015, 667, 667, 722,  722, 667,  611,  778, 722,  278,
    500,  667, 556, 833,  722, 778, 667, 778, 722, 667, 611, 722,  667, 944, 667,  667, 611,  278,  278, 278,  469,
    556,  333, 556, 556,  500, 556, 556, 278, 556, 556, 222, 222,  500, 222, 833,  556, 556,  556,  556, 333,  500,
    278,  556, 500, 722,  500, 500, 500, 334, 260, 334, 584, 0,    556, 0,   222,  556, 333,  1000, 556, 556,  333,
    1000, 667, 333, 1000, 0,   611, 0,   0,   222, 222, 333, 333,  350, 556, 1000, 333, 1000, 500,  333, 944,  0,
    500,  667, 278, 333,  556, 556, 556, 556, 260, 556, 333, 737,  370, 556, 584,  333, 737,  333,  400, 584,  333,
    333,  333, 556, 537,  278, 333, 333, 365, 556, 834, 834, 834,  611, 667, 667,  667, 667,  667,  667, 1000, 722,
    667,  667, 667, 667,  278, 278, 278, 278, 722, 722, 778, 778,  778, 778, 778,  584, 778,  722,  722, 722,  722,
    667,  667, 611, 556,  556, 556, 556, 556, 556, 889, 500, 556,  556, 556, 556,  278, 278,  278,  278, 556,  556,
    556,  556, 556, 556,  556, 584, 611, 556, 556, 556, 556, 500,  556, 500,
};
constexpr std::array<short, 224> kBold{
    278,  333, 474, 556,  556, 889, 722, 238, 333, 333, 389, 584, 278, 333, 278,  278, 556,  556,  556, 556,  556,
    556,  556, 556, 556,  556, 333, 333, 584, 584, 584, 611, 975, 722, 722, 722,  722, 667,  611,  778, 722,  278,
    556,  722, 611, 833,  722, 778, 667, 778, 722, 667, 611, 722, 667, 944, 667,  667, 611,  333,  278, 333,  584,
    556,  333, 556, 611,  556, 611, 556, 333, 611, 611, 278, 278, 556, 278, 889,  611, 611,  611,  611, 389,  556,
    333,  611, 556, 778,  556, 556, 500, 389, 280, 389, 584, 0,   556, 0,   278,  556, 500,  1000, 556, 556,  333,
    1000, 667, 333, 1000, 0,   611, 0,   0,   278, 278, 500, 500, 350, 556, 1000, 333, 1000, 556,  333, 944,  0,
    500,  667, 278, 333,  556, 556, 556, 556, 280, 556, 333, 737, 370, 556, 584,  333, 737,  333,  400, 584,  333,
    333,  333, 611, 556,  278, 333, 333, 365, 556, 834, 834, 834, 611, 722, 722,  722, 722,  722,  722, 1000, 722,
    667,  667, 667, 667,  278, 278, 278, 278, 722, 722, 778, 778, 778, 778, 778,  584, 778,  722,  722, 722,  722,
    667,  667, 611, 556,  556, 556, 556, 556, 556, 889, 556, 556, 556, 556, 556,  278, 278,  278,  278, 611,  611,
    611,  611, 611, 611,  611, 584, 611, 611, 611, 611, 611, 556, 611, 556,
};

// The Unicode characters of the codes 0x80 to 0x9F, where the code page differs from Latin-1; 0 is unassigned.
constexpr std::array<char16_t, 32> kHighCodes{
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

std::optional<char> win_ansi_code(char16_t c)
{
    if (c < 0x20 || c == 0x7F) {
        return ' ';
    }
    if (c < 0x7F || (c >= 0xA0 && c <= 0xFF)) {
        return static_cast<char>(c);
    }
    for (std::size_t i = 0; i < kHighCodes.size(); ++i) {
        if (kHighCodes[i] != 0 && kHighCodes[i] == c) {
            return static_cast<char>(0x80 + i);
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<QByteArray> to_win_ansi(QStringView text)
{
    QByteArray encoded(text.size(), Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const std::optional<char> code = win_ansi_code(text[i].unicode());
        if (!code) {
            return std::nullopt;
        }
        encoded[i] = *code;
    }
    return encoded;
}

int helvetica_width(const QByteArray& win_ansi, bool bold)
{
    const std::array<short, 224>& widths = bold ? kBold : kRegular;
    int sum = 0;
    for (const char c : win_ansi) {
        const auto code = static_cast<unsigned char>(c);
        if (code >= 32) {
            sum += widths[code - 32];
        }
    }
    return sum;
}

} // namespace cvd::reports
