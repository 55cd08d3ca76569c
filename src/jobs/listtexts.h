#pragma once

#include "core/texts.h"

#include <QString>

// Shared texts of the row operations and of the lists' context menu.
namespace Tr
{
inline const QString MWButtonDelete = QStringLiteral("Delete");
inline const QString MWDeleteJbTitle = QStringLiteral("Delete job options");
inline const QString MWResetAllRows = QStringLiteral("Reset All Rows");
inline const QString MWResetAllRowQuestion =
    QStringLiteral("OK to reset the date to today, delete all notes and zero the total times for All Rows?");
inline const QString MWResetRow = QStringLiteral("Reset Row");
inline const QString MWResetRowQuestionNote =
    QStringLiteral("OK to reset the selected row's date to today, delete the note and zero the total time?");
inline const QString MWResetRowQuestion =
    QStringLiteral("OK to reset the selected row's date to today and zero the total time?");

} // namespace Tr
