#pragma once

#include <QDialog>
#include <QList>
#include <QPointer>
#include <memory>

class Brevano;
class BrevanoData;
class IgnoreDesktopItemsObjectController;
class QLabel;
namespace Ui {
class Welcome;
}

// The tutorial shown on first start: a picture per page, moved through with Back
// and Next, and on the last page the initial set-up, applied only by Finish.
// Every construction is a window of its own; it deletes itself when closed.
class WelcomeWindowController : public QDialog
{
    Q_OBJECT
public:
    struct Page
    {
        QString image; // resource name; empty on the set-up page
        QString text;  // the page's word, which its picture shows
        QString description;
    };

    WelcomeWindowController(BrevanoData &data, Brevano &engine, QWidget *parent = nullptr);
    ~WelcomeWindowController() override;

    // The window opened last, until it is closed.
    static bool isOpen() { return !s_open.isNull(); }
    static void bringToFront();
    static WelcomeWindowController *openInstance() { return s_open; }
    // Set by the openers; the tutorial looks the same either way.
    static void setTutorialMode(bool on) { s_tutorialMode = on; }
    static bool tutorialMode() { return s_tutorialMode; }

    void prepareCurrentPage(int index);
    void transitionToNextPage(int index);
    void pressedNext();
    void pressedBack();
    void pressedFinish();
    void updateButtons();

    int currentPage() const { return m_currentPage; }
    const QList<Page> &pageData() const { return m_pageData; }
    QLabel *currentImageView() const { return m_currentImageView; }
    IgnoreDesktopItemsObjectController *ignoreList() const { return m_ignoreList; }
    Ui::Welcome &ui() { return *m_ui; }

public slots:
    // Every way of closing ends here (Finish, Escape, the title bar's control);
    // only Finish has applied anything before.
    void done(int result) override;

private:
    void showPage(QLabel *imageView, int index);
    void fadeOut(QLabel *imageView);

    static QPointer<WelcomeWindowController> s_open;
    static bool s_tutorialMode;
    BrevanoData &m_data;
    Brevano &m_engine;
    std::unique_ptr<Ui::Welcome> m_ui;
    IgnoreDesktopItemsObjectController *m_ignoreList;
    QLabel *m_currentImageView;
    QList<Page> m_pageData;
    int m_currentPage = -1;
};
