#include <QTextCodec>

#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    // As hosts do: dumps have Chinese names, and the tests run in the plain C locale.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
