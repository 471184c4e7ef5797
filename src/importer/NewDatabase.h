#pragma once
// A new help-text database made from the template beside the program: an Access
// file as the operator panel reads it, or an SQLite one when the user asks.

#include <QString>

namespace ht
{

struct NewDatabaseRequest {
    QString target;
    bool materialChange = true; // the template with the material-change tables
    int added = 0;              // alarms and warnings per machine after the 256 standard ones
    bool sqlite = false;
};

// The template's file name for the variant.
QString templateFileName(bool materialChange);
// Makes the database at `target` from the template `templatePath`; `target` must not exist: it is written under
// another name and renamed into place, so a failure leaves nothing behind and
// a file of that name is never replaced. "" when made, else why not.
QString makeNewDatabase(const QString &templatePath, const NewDatabaseRequest &request);

} // namespace ht
