#include "ide/editor/style_store.h"

#include "ide/editor/basic_lexer.h"
#include "ide/editor/editor_setup.h"

#include <QColor>
#include <QFont>
#include <optional>

namespace zorvel::ide {
namespace {

const QString kColorKey = QStringLiteral("Color");
const QString kPaperKey = QStringLiteral("Paper");
const QString kFontKey = QStringLiteral("Font");

// A font kept with a pixel size is turned into points, as the editor wants.
std::optional<QFont> storedFont(const QSettings& settings) {
    const QString text = settings.value(kFontKey).toString();
    QFont font;
    if (text.isEmpty() || !font.fromString(text)) return std::nullopt;
    if (font.pointSizeF() <= 0 && font.pixelSize() > 0)
        font.setPointSizeF(fontOfPixelHeight(font.family(), font.pixelSize()).pointSizeF());
    if (font.pointSizeF() <= 0) return std::nullopt;
    return font;
}

void loadStyle(QSettings& settings, BasicLexer& lexer, int style) {
    settings.beginGroup(BasicLexer::styleKey(style));
    QColor color(settings.value(kColorKey).toString());
    if (color.isValid()) lexer.setColor(color, style);
    QColor paper(settings.value(kPaperKey).toString());
    if (paper.isValid()) lexer.setPaper(paper, style);
    if (auto font = storedFont(settings)) lexer.setFont(*font, style);
    settings.endGroup();
}

void saveStyle(QSettings& settings, const BasicLexer& lexer, int style) {
    settings.beginGroup(BasicLexer::styleKey(style));
    settings.setValue(kColorKey, lexer.color(style).name());
    settings.setValue(kPaperKey, lexer.paper(style).name());
    settings.setValue(kFontKey, lexer.font(style).toString());
    settings.endGroup();
}

} // namespace

std::unique_ptr<QSettings> openEditorSettings() {
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                       QStringLiteral("Zorvel"), QStringLiteral("ZORVEL"));
}

void loadStyles(BasicLexer& lexer) {
    auto settings = openEditorSettings();
    for (int style = 0; style < BasicLexer::StyleCount; ++style)
        loadStyle(*settings, lexer, style);
}

void saveStyles(const BasicLexer& lexer) {
    auto settings = openEditorSettings();
    for (int style = 0; style < BasicLexer::StyleCount; ++style)
        saveStyle(*settings, lexer, style);
    settings->sync();
}

} // namespace zorvel::ide
