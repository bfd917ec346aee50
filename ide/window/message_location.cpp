#include "ide/window/message_location.h"

#include <QRegularExpression>

namespace zorvel::ide {

std::optional<MessageLocation> locateMessage(const QString& message) {
    static const QRegularExpression compiler(
        QStringLiteral("^(?:Error at|Warning) Line \\[(\\d+)\\]\\tIn file \\[([^\\]]*)\\]"));
    static const QRegularExpression assembler(
        QStringLiteral("^(?:Error|Warning|Message)\\[\\d+\\]\\s+(.+) (\\d+) : "));
    QRegularExpressionMatch m = compiler.match(message);
    if (m.hasMatch()) return MessageLocation{m.captured(2), m.captured(1).toInt(), false};
    m = assembler.match(message);
    if (m.hasMatch()) return MessageLocation{m.captured(1), m.captured(2).toInt(), true};
    return std::nullopt;
}

} // namespace zorvel::ide
