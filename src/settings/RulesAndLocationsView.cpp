#include "RulesAndLocationsView.h"

#include "ActionListObjectController.h"
#include "Brevano.h"
#include "FilterListObjectController.h"
#include "LocationListObjectController.h"
#include "RuleListObjectController.h"

#include <QGridLayout>
#include <QLabel>
#include <QTableView>
#include <QVBoxLayout>

namespace {
// A list under its heading, which names it for assistive technology too.
QWidget *headed(const QString &heading, ListObjectController *list)
{
    auto *box = new QWidget;
    auto *layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *label = new QLabel(heading);
    label->setBuddy(list->tableView());
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    layout->addWidget(label);
    layout->addWidget(list);
    return box;
}
} // namespace

RulesAndLocationsView::RulesAndLocationsView(Brevano &engine, QWidget *parent)
    : QWidget(parent), m_locations(new LocationListObjectController(engine)),
      m_rules(new RuleListObjectController(engine.notifications())),
      m_filters(new FilterListObjectController), m_actions(new ActionListObjectController)
{
    auto *note = new QLabel(QStringLiteral(
        "Rule-based tidying is not available in this version: these lists only show what is "
        "stored, and nothing you do here is kept. In advanced mode no tidy moves anything."));
    note->setObjectName(QStringLiteral("unavailableNote"));
    note->setWordWrap(true);
    auto *grid = new QGridLayout;
    grid->addWidget(headed(QStringLiteral("Locations"), m_locations), 0, 0);
    grid->addWidget(headed(QStringLiteral("Rules"), m_rules), 0, 1);
    grid->addWidget(headed(QStringLiteral("Filters"), m_filters), 1, 0);
    grid->addWidget(headed(QStringLiteral("Actions"), m_actions), 1, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(note);
    layout->addLayout(grid, 1);
}
