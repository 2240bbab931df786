// SPDX-License-Identifier: MIT
#include "orbel/LogFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <string_view>
#include <type_traits>

namespace orbel {

namespace {

enum class Length { None, Char, Short, Long, LongLong, Size, Max, PtrDiff, LongDouble };

// The length modifiers, the doubled letters before the single ones.
struct Modifier {
    std::string_view text;
    Length size;
};
constexpr std::array<Modifier, 8> kModifiers{{{"hh", Length::Char},
                                              {"h", Length::Short},
                                              {"ll", Length::LongLong},
                                              {"l", Length::Long},
                                              {"z", Length::Size},
                                              {"j", Length::Max},
                                              {"t", Length::PtrDiff},
                                              {"L", Length::LongDouble}}};

// One "%..." conversion of a format.
struct Conversion {
    std::size_t length = 0;  // characters it takes in the format
    std::string body;        // flags, width and precision, as written
    int stars = 0;           // '*' in width and precision: each takes an int argument
    Length size = Length::None;
    char type = '\0';  // the conversion character; '\0' if the text is no conversion
};

bool isOneOf(char c, std::string_view set) {
    return c != '\0' && set.find(c) != set.npos;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Passes over a width or a precision at `format[i]`: a '*' (which takes an int argument) and
// digits. Returns the index after it.
std::size_t passCount(const char* format, std::size_t i, Conversion& conversion) {
    if (format[i] == '*') {
        ++conversion.stars;
        ++i;
    }
    while (isDigit(format[i])) {
        ++i;
    }
    return i;
}

// Reads the conversion that starts at the '%' at `format[0]`.
Conversion parseConversion(const char* format) {
    Conversion conversion;
    std::size_t i = 1;
    while (isOneOf(format[i], "-+ #0'")) {
        ++i;
    }
    i = passCount(format, i, conversion);
    if (format[i] == '.') {
        i = passCount(format, i + 1, conversion);
    }
    conversion.body.assign(format + 1, i - 1);
    const std::string_view rest(format + i);
    for (const Modifier& modifier : kModifiers) {
        if (rest.starts_with(modifier.text)) {
            conversion.size = modifier.size;
            i += modifier.text.size();
            break;
        }
    }
    if (isOneOf(format[i], "diouxXcspfFeEgGaAn%")) {
        conversion.type = format[i];
        ++i;
    }
    conversion.length = i;
    return conversion;
}

// The caller's arguments, taken one at a time with the type each conversion asks for.
class Arguments {
public:
    explicit Arguments(va_list args) { va_copy(args_, args); }
    ~Arguments() { va_end(args_); }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    template <class T>
    T next() {
        return va_arg(args_, T);
    }

private:
    va_list args_;
};

// Appends one conversion, rendered by snprintf from a format that holds only that conversion,
// whose length modifier matches the type of `value`.
template <class... Values>
void appendPrintf(std::string& out, const std::string& conversionFormat, Values... values) {
    const int needed = std::snprintf(nullptr, 0, conversionFormat.c_str(), values...);
    if (needed <= 0) {
        return;
    }
    const std::size_t start = out.size();
    const std::size_t count = static_cast<std::size_t>(needed);
    out.resize(start + count + 1);
    std::snprintf(out.data() + start, count + 1, conversionFormat.c_str(), values...);
    out.resize(start + count);
}

class ConversionWriter {
public:
    ConversionWriter(std::string& out, const Conversion& conversion, Arguments& args)
        : out_(out), conversion_(conversion) {
        for (int i = 0; i < conversion.stars; ++i) {
            stars_[i] = args.next<int>();
        }
    }

    template <class T>
    void write(std::string_view modifier, T value) {
        std::string conversionFormat = "%" + conversion_.body;
        conversionFormat += modifier;
        conversionFormat += conversion_.type;
        switch (conversion_.stars) {
            case 0:
                appendPrintf(out_, conversionFormat, value);
                break;
            case 1:
                appendPrintf(out_, conversionFormat, stars_[0], value);
                break;
            default:
                appendPrintf(out_, conversionFormat, stars_[0], stars_[1], value);
                break;
        }
    }

private:
    std::string& out_;
    const Conversion& conversion_;
    int stars_[2] = {0, 0};
};

void writeSigned(ConversionWriter& writer, Length size, Arguments& args) {
    switch (size) {
        case Length::Long:
            return writer.write("l", args.next<long>());
        case Length::LongLong:
        case Length::LongDouble:
            return writer.write("ll", args.next<long long>());
        case Length::Size:
            return writer.write("z", args.next<std::make_signed_t<std::size_t>>());
        case Length::Max:
            return writer.write("j", args.next<std::intmax_t>());
        case Length::PtrDiff:
            return writer.write("t", args.next<std::ptrdiff_t>());
        case Length::Char:
            return writer.write("hh", args.next<int>());
        case Length::Short:
            return writer.write("h", args.next<int>());
        case Length::None:
            return writer.write("", args.next<int>());
    }
}

void writeUnsigned(ConversionWriter& writer, Length size, Arguments& args) {
    switch (size) {
        case Length::Long:
            return writer.write("l", args.next<unsigned long>());
        case Length::LongLong:
        case Length::LongDouble:
            return writer.write("ll", args.next<unsigned long long>());
        case Length::Size:
            return writer.write("z", args.next<std::size_t>());
        case Length::Max:
            return writer.write("j", args.next<std::uintmax_t>());
        case Length::PtrDiff:
            return writer.write("t", args.next<std::make_unsigned_t<std::ptrdiff_t>>());
        case Length::Char:
            return writer.write("hh", args.next<unsigned int>());
        case Length::Short:
            return writer.write("h", args.next<unsigned int>());
        case Length::None:
            return writer.write("", args.next<unsigned int>());
    }
}

void writeConversion(std::string& out, const Conversion& conversion, Arguments& args) {
    if (conversion.type == '%') {
        out += '%';
        return;
    }
    ConversionWriter writer(out, conversion, args);
    const bool wide = conversion.size == Length::Long;
    switch (conversion.type) {
        case 'd':
        case 'i':
            return writeSigned(writer, conversion.size, args);
        case 'o':
        case 'u':
        case 'x':
        case 'X':
            return writeUnsigned(writer, conversion.size, args);
        case 'c':
            if (wide) {
                return writer.write("l", args.next<wint_t>());
            }
            return writer.write("", args.next<int>());
        case 's':
            if (wide) {
                const wchar_t* text = args.next<const wchar_t*>();
                return writer.write("l", text != nullptr ? text : L"(null)");
            } else {
                const char* text = args.next<const char*>();
                return writer.write("", text != nullptr ? text : "(null)");
            }
        case 'p':
            return writer.write("", args.next<void*>());
        case 'n':
            // Takes its pointer and writes nothing through it.
            args.next<void*>();
            return;
        default:
            if (conversion.size == Length::LongDouble) {
                return writer.write("L", args.next<long double>());
            }
            return writer.write("", args.next<double>());
    }
}

}  // namespace

std::string renderLogLine(const char* format, va_list args) {
    std::string out;
    if (format == nullptr) {
        return out;
    }
    Arguments arguments(args);
    const char* p = format;
    while (*p != '\0') {
        // Drivers write "&d" for "%d" and pass its int all the same.
        if (p[0] == '&' && p[1] == 'd') {
            appendPrintf(out, "%d", arguments.next<int>());
            p += 2;
            continue;
        }
        if (*p != '%') {
            out += *p++;
            continue;
        }
        const Conversion conversion = parseConversion(p);
        if (conversion.type == '\0') {
            out.append(p, conversion.length);
        } else {
            writeConversion(out, conversion, arguments);
        }
        p += conversion.length;
    }
    return out;
}

std::string logLineOf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::string line = renderLogLine(format, args);
    va_end(args);
    return line;
}

}  // namespace orbel
