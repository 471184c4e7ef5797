// Names from the database never lead a path out of the help directory.

#include "common/SafePathName.h"

#include <gtest/gtest.h>

using namespace ht;

TEST(SafePathName, OnlyPlainFolderNamesPass)
{
    for (const QString &name :
         {QString(), u"."_qs, u".."_qs, u"..."_qs, u". ."_qs, u"../M1"_qs, u"M1/.."_qs, u"a\\b"_qs, u"/etc"_qs,
          u"C:"_qs, u"C:evil"_qs, u"\\\\server\\share"_qs, QString(QChar(0)) + u"x"_qs, u"a\nb"_qs})
        EXPECT_FALSE(isSafePathName(name)) << name.toStdString();
    for (const QString &name :
         {u"M1"_qs, u"0815-A"_qs, u"English"_qs, u"Chinese (Simpl.)"_qs, u"Русский"_qs, u"..hidden"_qs, u"a..b"_qs})
        EXPECT_TRUE(isSafePathName(name)) << name.toStdString();
}

TEST(SafePathName, PathInsideResolvesDotsBeforeDeciding)
{
    EXPECT_TRUE(isPathInside(u"/h/help/"_qs, u"/h/help/M1/Alarms/English/1.html"_qs));
    for (const QString &path : {u"/h/help/../x.html"_qs, u"/h/helpother/x.html"_qs, u"/h/help/"_qs})
        EXPECT_FALSE(isPathInside(u"/h/help/"_qs, path)) << path.toStdString();
}
