#include "documents/RelativePath.h"
#include "support/QtPrinting.h"

#include <gtest/gtest.h>

using namespace tb;

namespace {

TEST(RelativePathTest, ComparesCleanedComponentsAsText)
{
    const struct {
        const char* base;
        const char* file;
        const char* expected;
    } table[] = {
        {"/home/ann/Shows", "/home/ann/Shows/a.jpg", "a.jpg"},
        {"/home/ann/Shows", "/home/ann/Shows/pics/2026/a.jpg", "pics/2026/a.jpg"},
        {"/home/ann/Shows", "/home/ann/Pictures/a.jpg", "../Pictures/a.jpg"},
        {"/home/ann/Shows/deep/er", "/home/ann/a.jpg", "../../../a.jpg"},
        {"/", "/a.jpg", "a.jpg"},
        {"/home/ann/Shows", "/a.jpg", "../../../a.jpg"},
        {"/home/ann/Shows", "/home/ann/Shows", "."},
        {"/home/ann/Shows/", "/home//ann/Shows/./pics/../a.jpg", "a.jpg"},
        {"/home/ann/shows", "/home/ann/Shows/a.jpg", "../Shows/a.jpg"}, // case counts
        {"/home/ann/Show", "/home/ann/Shows/a.jpg", "../Shows/a.jpg"},  // whole components only
    };
    for (const auto& row : table)
        EXPECT_EQ(relativePath(QString::fromUtf8(row.base), QString::fromUtf8(row.file)),
                  QString::fromUtf8(row.expected))
            << row.base << " -> " << row.file;
}

} // namespace
