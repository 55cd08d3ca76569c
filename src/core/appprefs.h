#pragma once

#include <QString>

namespace core
{

// The settings of the program, held by App and stored in the preferences file. The initial values
// are the defaults of a first start.
struct AppPrefs
{
    int fontsize = 10;
    QString chosefont = QStringLiteral("Verdana");
    bool dateon = true;
    QString iam = QStringLiteral("Veltrick printed on");
    QString usrname = QStringLiteral("Default User");
    int wintop = 50;
    int winleft = 10;
    bool expdt = true;
    bool exphd = true;
    bool explt = true;
    bool expbr = false;
    bool expbc = false;
    bool expnt = true;
    int red = 243;
    int green = 246;
    int blue = 250;
    QString rmteops;
    bool nteon = false;
    bool netlook = false;
    QString lastdoc;
    bool autopen = false;
    bool warningsign = true;
    int waittime = 0;
    int statusposition = 38;
    bool statusquo = true;
    int statusleft = 501;
    int howmanyscreens = 0;
    int statustrans = 100;
    int dokflash = 1;
    int killQuit = 1;
    int winwidth = 501;
    int winheight = 400;
    int cls = 152;
    int presetwinLeft = 20;
    int presetwinTop = 50;
    int presetwinHeight = 299;
    int presetwinWidth = 406;
    QString exportFormat = QStringLiteral("xls");
    int updatetime = 1;
    int xprtEncoding = 1; // UTF-8: what Linux programs read by default

    // Not stored: set at start-up.
    int col1 = 10;
    int checktime = 1;
    int positionx = 0;
    int positiony = 0;

    bool operator==(const AppPrefs&) const = default;
};

} // namespace core
