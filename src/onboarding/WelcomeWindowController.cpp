#include "WelcomeWindowController.h"

#include "Brevano.h"
#include "BrevanoData.h"
#include "IgnoreDesktopItemsObjectController.h"
#include "ui_Welcome.h"

#include <QGraphicsOpacityEffect>
#include <QPixmap>
#include <QPropertyAnimation>
#include <QPushButton>

namespace {
constexpr int FadeMilliseconds = 300;

// The pages in order. Their words are drawn into the pictures, so the
// descriptions say the same for those who cannot see them.
QList<WelcomeWindowController::Page> tutorialPages()
{
    return {
        {QStringLiteral("Tutorial_00.jpg"), QStringLiteral("Drag"),
         QStringLiteral("Drag items from the panel back onto your Desktop.")},
        {QStringLiteral("Tutorial_01.jpg"), QStringLiteral("Drop"),
         QStringLiteral("Drop files on the panel to put them in the Shadow Desktop.")},
        {QStringLiteral("Tutorial_02.jpg"), QStringLiteral("Preferences"),
         QStringLiteral("In Preferences, set when to tidy, which Desktop items to leave alone "
                        "and which notifications to show.")},
        {QStringLiteral("Tutorial_03.jpg"), QStringLiteral("Support"),
         QStringLiteral("Open the User Guide from Help in the status menu.")},
        {QStringLiteral("Tutorial_04.jpg"), QStringLiteral("Support"),
         QStringLiteral("Click the tray icon with the right button for the status menu, or with "
                        "the middle button to open the Shadow Desktop.")},
        {QStringLiteral("Tutorial_05.jpg"), QStringLiteral("Support"),
         QStringLiteral("Brevano works from a terminal too: brevano status tells whether and when "
                        "it tidies, brevano tidy tidies now.")},
        {QString(), QString(), QString()},
    };
}
} // namespace

QPointer<WelcomeWindowController> WelcomeWindowController::s_open;
bool WelcomeWindowController::s_tutorialMode = false;

WelcomeWindowController::WelcomeWindowController(BrevanoData &store, Brevano &engine,
                                                 QWidget *parent)
    : QDialog(parent), m_data(store), m_engine(engine), m_ui(std::make_unique<Ui::Welcome>())
{
    Q_INIT_RESOURCE(onboarding);
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    m_ignoreList = new IgnoreDesktopItemsObjectController(store, engine.itemInfo());
    m_ignoreList->setObjectName(QStringLiteral("ignoreList"));
    // Inside its placeholder, it takes the placeholder's place in the tab order.
    m_ui->ignoreListContainer->layout()->addWidget(m_ignoreList);
    m_ui->ignoreCaption->setBuddy(m_ignoreList);
    m_ui->tidyPeriodically->setChecked(true);
    m_ui->displayAtLogin->setChecked(store.getShowWelcome());

    connect(m_ui->backButton, &QPushButton::clicked, this, &WelcomeWindowController::pressedBack);
    connect(m_ui->nextButton, &QPushButton::clicked, this, &WelcomeWindowController::pressedNext);
    connect(m_ui->finishButton, &QPushButton::clicked, this,
            &WelcomeWindowController::pressedFinish);

    m_ui->backButton->setEnabled(false);
    m_ui->nextButton->hide();
    m_ui->finishButton->show();
    m_currentImageView = m_ui->imageView1;
    m_currentPage = -1;
    m_pageData = tutorialPages();
    prepareCurrentPage(0);
    updateButtons();
    s_open = this;
}

WelcomeWindowController::~WelcomeWindowController() = default;

void WelcomeWindowController::bringToFront()
{
    if (!s_open)
        return;
    s_open->show();
    s_open->raise();
    s_open->activateWindow();
}

void WelcomeWindowController::showPage(QLabel *imageView, int index)
{
    const Page &page = m_pageData[index];
    imageView->setPixmap(
        page.image.isEmpty() ? QPixmap() : QPixmap(QStringLiteral(":/onboarding/") + page.image));
    imageView->setAccessibleName(page.text.isEmpty() ? QString()
                                                     : QStringLiteral("Page %1 of %2: %3")
                                                           .arg(index + 1)
                                                           .arg(m_pageData.size() - 1)
                                                           .arg(page.text));
    imageView->setAccessibleDescription(page.description);
}

void WelcomeWindowController::prepareCurrentPage(int index)
{
    if (index == m_currentPage || index < 0 || index >= m_pageData.size())
        return;
    showPage(m_currentImageView, index);
    m_currentPage = index;
}

void WelcomeWindowController::transitionToNextPage(int index)
{
    if (index == m_currentPage || index < 0 || index >= m_pageData.size())
        return;
    QLabel *old = m_currentImageView;
    auto *next = new QLabel(m_ui->parentView);
    next->setObjectName(QStringLiteral("imageView"));
    next->setMinimumSize(old->minimumSize());
    next->setFrameShape(old->frameShape());
    next->setFrameShadow(old->frameShadow());
    next->setAlignment(Qt::AlignCenter);
    showPage(next, index);
    m_ui->pageLayout->replaceWidget(old, next);
    m_currentImageView = next;
    m_currentPage = index;
    fadeOut(old);
    updateButtons();
}

// The old picture stays where it was, over the new page, and fades away.
void WelcomeWindowController::fadeOut(QLabel *imageView)
{
    if (!imageView->isVisibleTo(this)) {
        imageView->deleteLater();
        return;
    }
    imageView->setObjectName(QStringLiteral("fadingImageView"));
    imageView->setAttribute(Qt::WA_TransparentForMouseEvents);
    imageView->setAccessibleName(QString());
    imageView->setAccessibleDescription(QString());
    imageView->raise();
    auto *effect = new QGraphicsOpacityEffect(imageView);
    imageView->setGraphicsEffect(effect);
    auto *fade = new QPropertyAnimation(effect, "opacity", imageView);
    fade->setDuration(FadeMilliseconds);
    fade->setStartValue(1.0);
    fade->setEndValue(0.0);
    connect(fade, &QPropertyAnimation::finished, imageView, &QObject::deleteLater);
    fade->start();
}

void WelcomeWindowController::pressedNext()
{
    if (m_currentPage < m_pageData.size())
        transitionToNextPage(m_currentPage + 1);
}

void WelcomeWindowController::pressedBack()
{
    if (m_currentPage >= 1)
        transitionToNextPage(m_currentPage - 1);
}

void WelcomeWindowController::updateButtons()
{
    const bool last = m_currentPage == m_pageData.size() - 1;
    m_ui->nextButton->show();
    m_ui->finishButton->show();
    m_ui->finishButton->setEnabled(last);
    m_ui->nextButton->setEnabled(!last);
    m_ui->initialSetup->setVisible(last);
    m_currentImageView->setVisible(!last);
    m_ui->backButton->setEnabled(m_currentPage > 0);
    // Return moves on: to the next page, or on the last one finishes.
    m_ui->nextButton->setDefault(!last);
    m_ui->finishButton->setDefault(last);
}

void WelcomeWindowController::pressedFinish()
{
    m_ignoreList->saveSettings();
    m_engine.setEnabled(m_ui->tidyPeriodically->isChecked());
    m_data.updateStatusIcon();
    m_data.setShowWelcome(m_ui->displayAtLogin->isChecked());
    accept(); // closes, and deletes this window once control is back in the event loop
    m_data.saveDataFile();
}

void WelcomeWindowController::done(int result)
{
    if (s_open == this)
        s_open.clear();
    QDialog::done(result);
}
