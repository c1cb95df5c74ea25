#pragma once

#include <QWidget>

class ActionListObjectController;
class Brevano;
class FilterListObjectController;
class LocationListObjectController;
class RuleListObjectController;

// The locations, rules, filters and actions lists side by side, under a line
// saying that rule-based tidying is not available in this version. Nothing
// here changes the stored lists.
class RulesAndLocationsView : public QWidget
{
    Q_OBJECT
public:
    explicit RulesAndLocationsView(Brevano &engine, QWidget *parent = nullptr);

    LocationListObjectController *locations() const { return m_locations; }
    RuleListObjectController *rules() const { return m_rules; }
    FilterListObjectController *filters() const { return m_filters; }
    ActionListObjectController *actions() const { return m_actions; }

private:
    LocationListObjectController *m_locations;
    RuleListObjectController *m_rules;
    FilterListObjectController *m_filters;
    ActionListObjectController *m_actions;
};
