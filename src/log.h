#pragma once

#include <iostream>
#include <sstream>
#include <string_view>

/// One diagnostic line on standard error, written whole when it goes out of scope:
/// "ZorvicUI: LEVEL: file function:line: message".
class LogLine {
public:
    LogLine(std::string_view level, const char* file, const char* function, int line) {
        Text << "ZorvicUI: " << level << ": " << file << ' ' << function << ':' << line << ": ";
    }
    ~LogLine() {
        Text << '\n';
        std::cerr << Text.str() << std::flush;
    }
    LogLine(const LogLine&) = delete;
    LogLine& operator=(const LogLine&) = delete;

    template <typename T>
    LogLine& operator<<(const T& value) {
        Text << value;
        return *this;
    }

private:
    std::ostringstream Text;
};

// Macros, because only they know the place of the caller by its bare function name.
#define ZORVIC_LOG_ERROR LogLine("ERROR", __FILE__, __func__, __LINE__)
#define ZORVIC_LOG_WARNING LogLine("WARNING", __FILE__, __func__, __LINE__)
#define ZORVIC_LOG_DEBUG LogLine("DEBUG", __FILE__, __func__, __LINE__)
