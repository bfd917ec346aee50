// Reading back the assembler's HEX file (Intel INHX8M): the program words
// used, the program image for the programmer and the configuration word.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace zorvel {

struct HexImage {
    static constexpr int kProgramWords = 8999;
    std::vector<uint16_t> program = std::vector<uint16_t>(kProgramWords, 0x3FFF);
    int configWord = -1;              // -1 when the file has none
    std::vector<std::string> records; // the record lines, for display
};

struct HexReading {
    bool found = false;
    int wordsUsed = 0;
    HexImage image;
};

// Words used: the data bytes of the records before the first record at the
// configuration address (HEX byte addressing) or the end record, halved.
HexReading readHexFile(const std::filesystem::path& path, int configAddress);

} // namespace zorvel
