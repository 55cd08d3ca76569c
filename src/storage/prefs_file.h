#pragma once

#include "core/appprefs.h"

#include <QByteArray>
#include <QString>

namespace storage
{

// The settings file in the preferences folder.
inline const QString kPrefsFileName = QStringLiteral("Veltrick8 prefs");

// Fields of the settings file, reserved ones included.
inline constexpr int kPrefsFieldCount = 43;

// The bytes of the settings file: 43 fields, numbers cut to their low 16 bits, booleans as 1 or 0,
// `usrname` in MacRoman and the other texts in UTF-8. A text too long for its length byte is stored
// empty, so that every later field stays where the reader looks for it.
QByteArray encodePrefs(const core::AppPrefs& prefs);

// Reads the settings over `defaults`. A short file fills the fields it holds; the rest keep their
// defaults. `fieldsRead` (when given) tells how many of the 43 fields were there.
core::AppPrefs decodePrefs(const QByteArray& bytes, const core::AppPrefs& defaults, int* fieldsRead = nullptr);

} // namespace storage
