#include "EngineFixture.h"
#include "IgnoreDesktopItemsObjectController.h"
#include "StatusDisplay.h"
#include "WelcomeWindowController.h"
#include "ui_Welcome.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QPropertyAnimation>
#include <QSignalSpy>
#include <QTableView>
#include <QtTest>

namespace {

// A tutorial over a sandbox with two Desktop items, "a.txt" already ignored,
// and an enabled engine.
struct TutorialFixture
{
    EngineFixture f;
    QString a;
    QString b;
    QPointer<WelcomeWindowController> window;

    TutorialFixture()
    {
        a = f.desktopItem("a.txt");
        b = f.desktopItem("b.txt");
        f.load();
        f.data.addIgnoreFiles({a});
        f.engine.setEnabled(true);
        f.data.updateStatusIcon();
    }
    ~TutorialFixture() { delete window.data(); }
    WelcomeWindowController *open()
    {
        window = new WelcomeWindowController(f.data, f.engine);
        window->show();
        [this] {
            QVERIFY(QTest::qWaitForWindowExposed(window));
        }();
        return window;
    }
    Ui::Welcome &ui() const { return window->ui(); }
    // Set-up choices that Finish would apply: every one differs from the store.
    void changeEverything() const
    {
        while (window->currentPage() < window->pageData().size() - 1)
            window->pressedNext();
        ui().tidyPeriodically->setChecked(false);
        ui().displayAtLogin->setChecked(false);
        IgnoreDesktopItemsObjectController *list = window->ignoreList();
        QTRY_VERIFY(!list->isReading());
        list->setIgnoreFileAtRow(int(list->sortedFilenames().indexOf("a.txt")), false);
        list->setIgnoreFileAtRow(int(list->sortedFilenames().indexOf("b.txt")), true);
    }
    QByteArray dataFile() const
    {
        QFile file(f.sandbox.dataFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }
};

// The outgoing picture's fade, run to its end, as the event loop would.
void finishFades(QWidget *window)
{
    for (QPropertyAnimation *fade : window->findChildren<QPropertyAnimation *>())
        fade->setCurrentTime(fade->totalDuration());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class tst_Welcome : public QObject
{
    Q_OBJECT

private slots:
    void pagesAndButtons();
    void finishAppliesTheSetUp_data();
    void finishAppliesTheSetUp();
    void closingAppliesNothing_data();
    void closingAppliesNothing();
    void everyOpeningIsANewWindow();
};

// Walks every page with Next and Return and back, checking the buttons, the
// pictures and what assistive technology hears; leaves a screenshot of each
// page in the build folder.
void tst_Welcome::pagesAndButtons()
{
    TutorialFixture t;
    WelcomeWindowController *window = t.open();
    Ui::Welcome &ui = t.ui();
    const int last = int(window->pageData().size()) - 1;
    QCOMPARE(last, 6);
    const QDir shots(QCoreApplication::applicationDirPath() + "/welcome-screenshots");
    QVERIFY(shots.mkpath("."));

    // Every control the keyboard reaches has a name.
    for (QWidget *control : window->findChildren<QWidget *>()) {
        if (control->focusPolicy() & Qt::TabFocus)
            QVERIFY2(
                !QAccessible::queryAccessibleInterface(control)->text(QAccessible::Name).isEmpty(),
                control->metaObject()->className());
    }

    const auto checkPage = [&](int page) {
        QCOMPARE(window->currentPage(), page);
        const bool isLast = page == last;
        QVERIFY(ui.nextButton->isVisible() && ui.finishButton->isVisible());
        QCOMPARE(ui.backButton->isEnabled(), page > 0);
        QCOMPARE(ui.nextButton->isEnabled(), !isLast);
        QCOMPARE(ui.finishButton->isEnabled(), isLast);
        QCOMPARE(ui.nextButton->isDefault(), !isLast);
        QCOMPARE(ui.finishButton->isDefault(), isLast);
        QCOMPARE(ui.initialSetup->isVisible(), isLast);
        QLabel *image = window->currentImageView();
        QCOMPARE(image->isVisible(), !isLast);
        if (!isLast) {
            const QString name = QString("Tutorial_%1.jpg").arg(page, 2, 10, QChar('0'));
            QCOMPARE(window->pageData()[page].image, name);
            QCOMPARE(image->pixmap().toImage(), QImage(":/onboarding/" + name));
            QAccessibleInterface *said = QAccessible::queryAccessibleInterface(image);
            QVERIFY2(said->text(QAccessible::Name).endsWith(window->pageData()[page].text),
                     qPrintable(said->text(QAccessible::Name)));
            QVERIFY(!said->text(QAccessible::Description).isEmpty());
        }
        finishFades(window);
        QVERIFY(window->grab().save(shots.filePath(QString("page-%1.png").arg(page))));
    };

    checkPage(0);
    window->pressedBack(); // nothing before the first page
    checkPage(0);
    QTest::mouseClick(ui.nextButton, Qt::LeftButton);
    checkPage(1);
    for (int page = 2; page <= last; ++page) {
        QTest::keyClick(window, Qt::Key_Return);
        checkPage(page);
    }
    window->pressedNext(); // nothing after the last page
    checkPage(last);
    // Tab goes from the checklist through the check boxes to the buttons.
    QVERIFY(QTest::qWaitForWindowActive(window));
    window->ignoreList()->tableView()->setFocus();
    QStringList order;
    for (int i = 0; i < 6; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        order.append(QApplication::focusWidget()->objectName());
    }
    QCOMPARE(order, (QStringList{"checkAllButton", "uncheckAllButton", "tidyPeriodically",
                                 "displayAtLogin", "backButton", "finishButton"}));
    QTest::mouseClick(ui.backButton, Qt::LeftButton);
    checkPage(last - 1);
    while (window->currentPage() > 0)
        window->pressedBack();
    checkPage(0);
}

// Finish applies the set-up page in full, and Return on it means Finish.
void tst_Welcome::finishAppliesTheSetUp_data()
{
    QTest::addColumn<bool>("tidy");
    QTest::addColumn<bool>("showAgain");
    QTest::newRow("tidy off, not again") << false << false;
    QTest::newRow("tidy on, again") << true << true;
}

void tst_Welcome::finishAppliesTheSetUp()
{
    QFETCH(bool, tidy);
    QFETCH(bool, showAgain);
    TutorialFixture t;
    t.f.engine.setEnabled(!tidy);
    t.f.data.setShowWelcome(!showAgain);
    t.f.data.updateStatusIcon();
    WelcomeWindowController *window = t.open();
    QVERIFY(t.ui().tidyPeriodically->isChecked());
    QCOMPARE(t.ui().displayAtLogin->isChecked(), !showAgain);
    t.changeEverything();
    t.ui().tidyPeriodically->setChecked(tidy);
    t.ui().displayAtLogin->setChecked(showAgain);
    QSignalSpy icon(&t.f.data.statusDisplay(), &StatusDisplay::statusIconChanged);

    QTest::keyClick(window, Qt::Key_Return);
    QCOMPARE(t.f.engine.getEnabled(), tidy);
    QCOMPARE(icon.count(), 1);
    QCOMPARE(icon.first().at(0).toBool(), tidy);
    QCOMPARE(icon.first().at(2).toString(),
             tidy ? QString("statusIcon.png") : QString("statusIconUserDisabled.png"));
    QCOMPARE(t.f.data.currentStatusIcon(),
             qint32(tidy ? StatusDisplay::Enabled : StatusDisplay::DisabledByUser));
    QVERIFY(!WelcomeWindowController::isOpen());
    QVERIFY(!window->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(t.window.isNull());

    // All of it is in the data file.
    EngineFixture reread;
    reread.adoptDataFileOf(t.f);
    reread.load();
    QCOMPARE(reread.engine.getEnabled(), tidy);
    QCOMPARE(reread.data.getShowWelcome(), showAgain);
    QVERIFY(!reread.data.shouldIgnoreFile(t.a));
    QVERIFY(reread.data.shouldIgnoreFile(t.b));
}

// Escape or the title bar's close button: the choices are dropped.
void tst_Welcome::closingAppliesNothing_data()
{
    QTest::addColumn<bool>("escape");
    QTest::newRow("escape") << true;
    QTest::newRow("title bar") << false;
}

void tst_Welcome::closingAppliesNothing()
{
    QFETCH(bool, escape);
    TutorialFixture t;
    const QByteArray file = t.dataFile();
    WelcomeWindowController *window = t.open();
    t.changeEverything();
    if (escape)
        QTest::keyClick(window, Qt::Key_Escape);
    else
        window->close();
    QVERIFY(!WelcomeWindowController::isOpen());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(t.window.isNull());
    QVERIFY(t.f.engine.getEnabled());
    QVERIFY(t.f.data.getShowWelcome());
    QVERIFY(t.f.data.shouldIgnoreFile(t.a));
    QVERIFY(!t.f.data.shouldIgnoreFile(t.b));
    QCOMPARE(t.dataFile(), file);
}

// Each opening makes a window; the last one made is the open instance.
void tst_Welcome::everyOpeningIsANewWindow()
{
    TutorialFixture t;
    QPointer<WelcomeWindowController> first = t.open();
    auto *second = new WelcomeWindowController(t.f.data, t.f.engine);
    second->show();
    QVERIFY(first && first != second);
    QCOMPARE(WelcomeWindowController::openInstance(), second);
    first->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(first.isNull());
    QCOMPARE(WelcomeWindowController::openInstance(), second);
    QVERIFY(second->isVisible());
    second->close();
    QVERIFY(!WelcomeWindowController::isOpen());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QTEST_MAIN(tst_Welcome)
#include "tst_Welcome.moc"
