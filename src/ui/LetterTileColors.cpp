#include "ui/LetterTileColors.h"

#include "look/theme/CurrentTheme.h"
#include "workspace/Workspace.h"

void colorLetterTiles(Workspace& workspace) {
    const auto color = [&workspace] {
        const MVBlackTheme& theme = CurrentTheme::theme();
        workspace.setTileColors({theme.windowTitleBarGradientColor2(),
                                 theme.windowTitleBarTextColor(), theme.letterTileColors()});
    };
    QObject::connect(&CurrentTheme::shared(), &CurrentTheme::changed, &CurrentTheme::shared(),
                     color);
    color();
}
