// What operators type into the seek field, and the texts of times and paths.

#include "fuzz/fuzz.h"
#include "text/assettext.h"
#include "text/timetext.h"

#include <cstring>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(TextOf(data, size));
    const QTime time = ParseSeekTime(text);
    Require(time.isNull() || time.isValid());
    // What the field shows is read back as it is.
    if (time.isValid()) Require(ParseSeekTime(ClockText(time.msecsSinceStartOfDay()).toStdString()) == time);

    std::int32_t number = 0;
    std::memcpy(&number, data, std::min(size, sizeof number));
    Require(ClockText(number).size() == 8);

    const std::string folder = StripFilenameFromPath(text);
    const std::string name = StripPathFromFilename(text);
    Require(name.find_first_of("/\\") == std::string::npos);
    Require(text == name || text == folder + text[folder.size()] + name);
    return 0;
}
