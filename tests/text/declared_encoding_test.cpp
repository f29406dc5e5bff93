// Tests of the declared-encoding reader: XML declarations, both HTML meta
// forms and where the walk must stop; and every cut-off head of each text,
// held in a buffer that ends at its null, so that a read past it shows.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/doc_script.h"
#include "text/declared_encoding.h"

using vetra::test::Show;
using vetra::text::FindDeclaredEncoding;

namespace {

const struct {
    const char16_t* text;
    const char16_t* declared;
} kCases[] = {
    {u"", u""},
    {u"<?xml version=\"1.0\" encoding=\"GB2312\"?><a/>", u"GB2312"},
    {u"<?XML VERSION=\"1.0\" ENCODING='utf-8'?>", u"utf-8"},
    {u"<?xml version=\"1.0\" standalone=\"yes\" encoding = \" x \"?>", u" x "}, // as written
    {u"<?xml version=\"1.0\"?><a/>", u""},
    {u"<?xml encoding=\"UTF-8\"?><a/>", u""}, // the first attribute is never matched
    {u" <?xml version=\"1.0\" encoding=\"GB2312\"?>", u""},
    {u"<?xml version=\"1.0\" encoding=\"", u""},
    {u"<a/>", u""},
    {u"<?php ?><html><meta http-equiv=\"Content-Type\" content=\"text/html; charset=koi8-r\">",
     u"koi8-r"},
    {u"<?php ?><a/><?xml version=\"1.0\" encoding=\"GB2312\"?>", u""},
    {u"<!DOCTYPE html><html><head><meta http-equiv=\"Content-Type\" "
     u"content=\"text/html; charset=utf-8\"></head>",
     u"utf-8"},
    {u"<html><head><META HTTP-EQUIV=\"content-type\" CONTENT=\"text/html; CHARSET = big5\">",
     u"big5"},
    {u"<html><head><meta charset=\"utf-8\"></head>", u""},
    {u"<html><head></head><body><meta http-equiv=\"Content-Type\" "
     u"content=\"text/html; charset=utf-8\">",
     u""},
    {u"<html><body><meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">",
     u"utf-8"},
    {u"<html><head><meta http-equiv=\"Content-Type\" content=\"text/html\">"
     u"<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">",
     u""},
    {u"<html><head><meta http-equiv=\"refresh\" content=\"5\"><meta http-equiv=\"Content-Type\" "
     u"content=\"charset=latin1\">",
     u"latin1"},
    {u"<html><meta http-equiv=\"Content-Type\" content=\"charset=\">x", u"\""},
};

TEST(DeclaredEncoding, Cases) {
    for (const auto& c : kCases) {
        EXPECT_EQ(Show(FindDeclaredEncoding(c.text)), Show(c.declared)) << Show(c.text);
    }
}

// A head cut off anywhere may declare less than the whole text, never more
// than what is in it.
TEST(DeclaredEncoding, CutOffHeads) {
    for (const auto& c : kCases) {
        const std::u16string text = c.text;
        for (size_t n = 0; n <= text.size(); ++n) {
            std::unique_ptr<char16_t[]> head(new char16_t[n + 1]);
            text.copy(head.get(), n);
            head[n] = 0;
            const std::u16string found = FindDeclaredEncoding(head.get());
            EXPECT_NE(text.substr(0, n).find(found), std::u16string::npos) << Show(text) << n;
        }
    }
}

} // namespace
