// xml_parser.h - CVTXmlParser, the XML document class.
//
// A document is one UTF-16 text plus a flat array of element records; there
// are no node objects. Set a text, move a position over the elements, read
// names, attributes and data, and edit; the text is the document. A text
// that isn't well-formed is repaired into a tree, never refused.
//
// Threads: one object is used by one thread at a time; different objects
// are independent.
#ifndef VETRA_XML_PARSER_H
#define VETRA_XML_PARSER_H

#include <string>

#include "vetra/vetra_export.h"

namespace vetra {
namespace xml {
class XmlEngine;
}
} // namespace vetra

/// An XML document with a position in it.
///
/// Results: every `int` result is 1 for success and 0 for failure. A
/// *computed* result (a `const vtchar*` from a Get operation other than
/// GetDoc) points into a string owned by the object, valid until the next
/// computed result on the same object or its destruction. Reads never fail:
/// a miss gives the empty text.
///
/// Heap exhaustion raises std::bad_alloc out of any operation; the object
/// stays destructible.
class VETRA_API CVTXmlParser {
  public:
    /// An empty document.
    CVTXmlParser();
    ~CVTXmlParser();
    /// Copies the whole document (text, records, position, saved positions)
    /// into an independent object.
    CVTXmlParser(const CVTXmlParser& other);
    CVTXmlParser& operator=(const CVTXmlParser& other);
    /// Takes over the document of `other` without copying it; `other` is
    /// left an empty document (which needs a new, small allocation).
    CVTXmlParser(CVTXmlParser&& other);
    /// Exchanges the documents of the two objects; never allocates.
    CVTXmlParser& operator=(CVTXmlParser&& other) noexcept;

    /// Replaces the document by `text` (null or empty: an empty document,
    /// and null also gives the memory back) and parses it. The position
    /// stands before the root element and saved positions are forgotten.
    /// Returns 1 if the text is well-formed with exactly one root element;
    /// otherwise 0, and the repaired tree can still be read and edited.
    int SetDoc(const vtchar* text);
    /// The document text itself, valid until the text changes (an edit,
    /// SetDoc or Load). Never null.
    const vtchar* GetDoc() const;

    // --- Files -------------------------------------------------------------
    // A path is UTF-8 bytes as the file system takes them, or UTF-16, which
    // is converted to UTF-8. A null or empty path gives 0 and changes
    // nothing. Every step goes to the result log (GetResultLog), a failure
    // as <file_error msg="..." n="..."/> with errno and the first line of
    // its strerror text (empty if the whole text exceeds 99 characters).

    /// Reads the whole file and parses it as SetDoc does. The encoding is,
    /// in this order: a byte-order mark (UTF-8, UTF-16LE, UTF-16BE), the
    /// encoding declared in the first 1024 bytes (an XML declaration or an
    /// HTML meta element), UTF-8 if the file starts with '<' or its bytes read
    /// as UTF-8, else the locale's code page (UTF-8 in the "C" locale). Null
    /// characters are dropped; bytes the encoding can't read become U+FFFD.
    /// A mark found is remembered for Save; nothing else of the encoding is.
    /// On Windows the path goes to _wfopen as it is, the default code page is
    /// GetACP's, the system's converters decide what becomes of unmapped bytes,
    /// and <file_error/> carries GetLastError's code and FormatMessageW's text
    /// (a directory gives 5, "Access denied.").
    ///
    /// Returns 1 if the text is well-formed with exactly one root element,
    /// else 0 (an empty file gives 0). On failure (no such file, a directory,
    /// no permission, a file above 2 GiB - 1 byte: EOVERFLOW, a read error, a
    /// UTF-16 path with a lone surrogate: EILSEQ) the document is empty and 0
    /// is returned; the remembered mark stays as it was if the file couldn't
    /// be opened. The position stands before the root element; saved
    /// positions are forgotten either way.
    int Load(const vtchar* path);
    int Load(const char* path);
    /// Writes the text unchanged (no line end or declaration is added or
    /// changed) in the encoding of the mark that Load found, with that mark;
    /// else the encoding the text declares; else UTF-8 without a mark. A
    /// document declaring UTF-16 is written as UTF-16 with a mark. Characters
    /// the encoding lacks become its default character (logged as
    /// <conversion_loss/>); the save still succeeds.
    ///
    /// A save never leaves a half-written file: the new text goes to a
    /// temporary file ".NAME.vetra-XXXXXX" beside the target, which takes the
    /// target's place once every byte is written, so on failure the old file
    /// is untouched. Nothing is synced to the disk.
    ///
    /// On Linux a symbolic link is followed: the file it names is replaced.
    /// The new file keeps the old one's permission bits (and owner and group
    /// where the process may set them); a new file gets 0666 less the umask.
    /// A device or pipe is written in place.
    ///
    /// On Windows the temporary file replaces the target with ReplaceFileW,
    /// which keeps its attributes and security. Characters the encoding lacks
    /// get the system's best-fit mapping where it has one.
    ///
    /// Returns 1 if everything was written, else 0: a missing folder, a
    /// directory (EISDIR), a file or folder the process may not write
    /// (EACCES; root may), a full disk, an encoding the system can't convert
    /// to (EINVAL). The document itself is never changed.
    int Save(const vtchar* path);
    int Save(const char* path);

    // --- Navigation ---------------------------------------------------------
    // The position is three levels: a parent, a main element among the
    // parent's children, and a child of the main element. A failing move
    // leaves the position as it was (but see FindChildElem).

    /// Moves the main position to the next sibling matching `path`: null or
    /// empty for any element, or a name (`item`). A path may go on with
    /// predicates and steps (`item[2]`, `item/@id`, `item/sub`): they are
    /// checked for syntax, and only the first step's name is matched. Paths
    /// starting with `/` or `//`, and paths that don't parse, fail. The
    /// search goes on from the current main position, never wraps around.
    int FindElem(const vtchar* path = nullptr);
    /// Moves the child position to the next child of the main element that
    /// matches `path`. With no main position it first moves the main
    /// position to the next element (which stays even if the child search
    /// then fails).
    int FindChildElem(const vtchar* path = nullptr);
    /// The main element becomes the parent level; the child position becomes
    /// the main position. Fails without a main position.
    int IntoElem();
    /// The parent becomes the main element; the old main position becomes the
    /// child position. Fails at document level.
    int OutOfElem();
    /// Before the first element of the document.
    void ResetPos();
    /// Before the first element of the current parent.
    void ResetMainPos();
    /// Before the first child of the main element.
    void ResetChildPos();

    // --- Reading (computed results) ----------------------------------------
    // Names come back raw; data and attribute values are decoded (entity and
    // character references, CDATA). A miss gives the empty text.

    /// The tag name of the main element.
    const vtchar* GetTagName();
    /// The tag name of the child element.
    const vtchar* GetChildTagName();
    /// The name of the main element's attribute at `index` (from 0).
    const vtchar* GetAttribName(int index);
    /// The data of the main element: its text and CDATA content; empty for
    /// an element with child elements.
    const vtchar* GetData();
    /// The data of the child element.
    const vtchar* GetChildData();
    /// The value of the main element's attribute `name`.
    const vtchar* GetAttrib(const vtchar* name);
    /// The value of the child element's attribute `name`.
    const vtchar* GetChildAttrib(const vtchar* name);
    /// The raw text of the main element, with the line end behind it when a
    /// tag or the end of the document follows.
    const vtchar* GetSubDoc();
    /// The raw text of the child element, as GetSubDoc.
    const vtchar* GetChildSubDoc();

    // --- Editing -----------------------------------------------------------
    // Each edit splices the text once and keeps the records true; the pointer
    // from GetDoc is void afterwards. Names are written as given, not checked
    // or escaped; values are escaped (<, & and > become references).
    // Written documents use "\r\n" line ends and no indentation.

    /// Adds element `name` with data `value` after the main position (at the
    /// end of the parent's children if there is none); it becomes the main
    /// position. Null or empty `value` gives `<name/>`.
    int AddElem(const vtchar* name, const vtchar* value = nullptr);
    /// As AddElem, with the number as data: decimal digits.
    int AddElem(const vtchar* name, unsigned long long value);
    int AddElem(const vtchar* name, long long value);
    /// As AddElem, with the number formatted as "%f" (six decimals). Fails,
    /// changing nothing, for a magnitude of 1e120 or more, which doesn't fit
    /// the 127 characters that a value may have.
    int AddElem(const vtchar* name, double value);
    int AddElem(const vtchar* name, unsigned int value);
    int AddElem(const vtchar* name, int value);
    /// As AddElem, but before the main position (first if there is none).
    int InsertElem(const vtchar* name, const vtchar* value = nullptr);
    /// Adds a child of the main element after the child position; it
    /// becomes the child position. Fails without a main position.
    int AddChildElem(const vtchar* name, const vtchar* value = nullptr);
    /// Parses `text` and splices it in after the main position; its first
    /// element becomes the main position. Returns 1 only for a well-formed
    /// text with one element; otherwise the text is spliced in all the same
    /// (only its elements if well-formed, else all of it) and 0 is returned.
    /// The result log then holds the parse's reports. Null counts as empty.
    int AddSubDoc(const vtchar* text);
    /// As AddSubDoc, before the main position.
    int InsertSubDoc(const vtchar* text);
    /// As AddSubDoc, as a child after the child position.
    int AddChildSubDoc(const vtchar* text);
    /// Removes the main element, its content and the whitespace behind it if
    /// a tag or the end follows; the previous sibling becomes the main
    /// position (none if it was first). Saved positions on it or inside it
    /// are dropped.
    int RemoveElem();
    /// Removes the child element; the previous child becomes the child
    /// position.
    int RemoveChildElem();

    /// Sets attribute `name` of the main element to `value` (null: empty),
    /// replacing an existing value in place or adding it last. AddAttrib and
    /// SetAttrib are the same operation.
    int AddAttrib(const vtchar* name, const vtchar* value);
    int AddAttrib(const vtchar* name, unsigned long long value);
    int AddAttrib(const vtchar* name, long long value);
    /// "%f"; fails for a magnitude of 1e120 or more, as AddElem.
    int AddAttrib(const vtchar* name, double value);
    int AddAttrib(const vtchar* name, unsigned int value);
    int AddAttrib(const vtchar* name, int value);
    int SetAttrib(const vtchar* name, const vtchar* value);
    int SetAttrib(const vtchar* name, int value);
    /// As AddAttrib, on the child element.
    int AddChildAttrib(const vtchar* name, const vtchar* value);
    int AddChildAttrib(const vtchar* name, int value);
    int SetChildAttrib(const vtchar* name, const vtchar* value);
    int SetChildAttrib(const vtchar* name, int value);

    /// Flags of SetData and SetChildData.
    enum DataFlags {
        DataCData = 0x1,          ///< write one CDATA section (split where the text holds "]]>")
        DataKeepRefs = 0x8,       ///< keep well-formed references such as &amp; as written
        DataEscapeQuotes = 0x100, ///< also write both quote characters as references
    };
    /// Replaces the whole content of the main element by `text` (null:
    /// empty), opening `<e/>` into `<e>text</e>`. Fails for an element with
    /// child elements. The position doesn't move.
    int SetData(const vtchar* text, int flags = 0);
    /// As SetData, on the child element.
    int SetChildData(const vtchar* text, int flags = 0);

    // --- Saved positions ---------------------------------------------------

    /// Saves the current position under `name` (null: the empty name),
    /// replacing an earlier one of that name. Positions survive edits and
    /// are forgotten by SetDoc and Load.
    int SavePos(const vtchar* name = nullptr);
    /// Goes back to the position saved under `name`; fails, without moving,
    /// if there is none or its element was removed.
    int RestorePos(const vtchar* name = nullptr);

    /// Computed: the result log of the last parse, load or save, a text of
    /// empty XML elements such as `<lone_end_tag tagname="b" offset="3"/>`.
    const vtchar* GetResultLog();

  private:
    vetra::xml::XmlEngine* m_pEngine; // never null; owned
    std::u16string* m_pResult;        // backs computed results; owned
};

#endif // VETRA_XML_PARSER_H
