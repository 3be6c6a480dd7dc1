// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace platform {

// Walks through the tags of an XML text and knows of XML what property lists need: elements,
// comments, processing instructions, CDATA, character references and the five predefined entities.
// Attributes are passed over, and so are declarations in the document type. Each call answers false
// where the text is malformed or cut short.
class PropertyListXmlScanner {
public:
    struct Tag {
        std::string_view name;
        bool closing = false; // "</name>"
        bool empty = false;   // "<name/>"
    };

    explicit PropertyListXmlScanner(std::string_view utf8) : m_rest(utf8) {}

    // Passes over what stands before the first element.
    bool skipProlog();

    // The next tag; only white space, comments and processing instructions may come before it.
    bool nextTag(Tag &tag);

    // The text of an element whose tag was just read, and its closing tag. Kept as it stands, line
    // ends and control characters included. Valid until the next call.
    bool readContent(const Tag &tag, std::string_view &content);

private:
    bool skipToMarkup();
    bool skipPast(std::string_view end);
    bool startsWith(std::string_view text) const { return m_rest.substr(0, text.size()) == text; }
    bool skip(std::string_view text);
    bool readTag(Tag &tag);
    bool readPieces();
    bool readReference();

    std::string_view m_rest;
    std::string m_content; // of an element whose text does not stand in one piece
};

} // namespace platform
