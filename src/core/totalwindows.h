#pragma once

#include "core/timesheet.h"
#include "platform/dialogs.h"

namespace core
{

// "Total Time for selected Job Number:": the sum over every row with the selected row's job number.
class Ttljobtme : public platform::ModalForm
{
public:
    inline static const QString kTTJDesc = QStringLiteral("Total Time for selected Job Number:");
    QString formName() const override { return QStringLiteral("ttljobtme"); }
    // With no selected row the fields stay empty.
    void Event_Open(const Timesheet& ListBox1);

    QString redjobno, cliproj, cpyfield;
};

// "Total Time for selected Date:": the sum over every row of the selected row's date.
class Ttldaytme : public platform::ModalForm
{
public:
    inline static const QString kTTLDesc = QStringLiteral("Total Time for selected Date:");

    QString formName() const override { return QStringLiteral("ttldaytme"); }
    void Event_Open(const Timesheet& ListBox1);

    QString redate, dayttl;
};

// Minutes of all rows whose cell `column` equals `key`, ignoring case.
qint64 sumWhere(const Timesheet& sheet, int column, const QString& key);

} // namespace core
