#pragma once

#include "ListObjectController.h"

class Brevano;
class RowListModel;

// The engine's "Locations", in their stored order. Tidying works on the
// Desktop alone in this version, so the list only shows them: its buttons do
// nothing, and drops are welcomed but move nothing.
class LocationListObjectController : public ListObjectController
{
    Q_OBJECT
public:
    static inline const QString DragType = QStringLiteral("KVLocation");

    explicit LocationListObjectController(Brevano &engine, QWidget *parent = nullptr);

    RowListModel *model() const { return m_model; }

private:
    RowListModel *m_model;
};
