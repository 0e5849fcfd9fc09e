// The lines that the library logs about a document, and what they mean to the document's author.
#pragma once

#include <span>
#include <string_view>

#include "check/findings.h"

namespace runhost {

// How a line tells what it is about.
enum class Place {
    BY_KEY,      // the line names a flat key
    BY_TEXT,     // the line names the value of a string
    BY_NUMBER,   // the line names the value of a number
    BY_WORD,     // the line names nothing but what it is about
    FIRST_NAME,  // the first member whose key ends in the word
    NOWHERE,     // follows from another line
};

struct MessageRow {
    std::string_view before;  // of the captured part
    std::string_view after;
    Place place;
    Severity severity;
    std::string_view word;     // part of the keys that the line can be about
    std::string_view notWord;  // and no part of them, unless empty
    const char* words;         // behind the subject; {} is the value
    Repair::Kind repair;
    const char* repairText;  // empty for names: the closest one of their table
};

// The first row that fits a line counts.
std::span<const MessageRow> messageRows();

}  // namespace runhost
