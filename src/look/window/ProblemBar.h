#pragma once

#include <QString>
#include <QWidget>

class BarButton;
class BarText;

/// Shows a problem in one row, and offers a remedy. Text that does not fit ends in an ellipsis;
/// assistive tools and the tool tip have the full text. Hidden while there is no problem. Main
/// thread only.
class ProblemBar final : public QWidget {
    Q_OBJECT

  public:
    /// Texts for the user. An empty text means no problem, an empty button text no button.
    struct Content {
        QString text;
        QString help = {};    ///< text of the button for the remedy
        QString details = {}; ///< text of the button for details
    };

    /// `height` in pixels.
    explicit ProblemBar(int height, QWidget* parent = nullptr);

    /// Shows or hides itself. Assistive tools announce a new text.
    void setContent(const Content& content);

    QString text() const;

  Q_SIGNALS:
    void helpWanted();
    void detailsWanted();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void announce();

    BarText* const text_;
    BarButton* const help_;
    BarButton* const details_;
};
