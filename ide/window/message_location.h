// Where a line of the message pane points: the compiler's "Error at Line
// [N]\tIn file [F]" and "Warning Line [N]..." frames, and the assembler's
// "Error[113]   FILE LINE : text" lines.
#pragma once

#include <QString>
#include <optional>

namespace zorvel::ide {

struct MessageLocation {
    QString file;           // the file name as the message gives it
    int line = 0;           // 1-based
    bool assembler = false; // a line of the assembler's error file
    bool operator==(const MessageLocation&) const = default;
};

std::optional<MessageLocation> locateMessage(const QString& message);

} // namespace zorvel::ide
