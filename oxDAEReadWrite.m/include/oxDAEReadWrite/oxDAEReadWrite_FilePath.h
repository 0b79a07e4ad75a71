// Local file paths of the pictures and files a document refers to.
#pragma once

#include <oxKernel/oxString.h>
#include <oxKernel/oxURI.h>

namespace OxDAEReader {

class oxDAEFile;

// The local file that `reference` names for the document loaded from
// `document` (the URI given to Load: a plain path or a "file:" URI).
// `reference` is an <image>'s init_from (or any other file reference), as
// written or as the reader corrected it. Empty when `reference` is empty,
// when it is a URI of another scheme ("http:"), or when the document itself
// is not a local file.
//
// What exporters write is read as they mean it:
// - percent-escapes are decoded ("With%20Spaces" names "With Spaces"); raw
//   blanks inside the reference are kept, blanks around it are dropped;
// - back-slashes separate folders, and "#" and "?" are part of the name;
// - "file:///abs", "file://localhost/abs", "file:///C:/x", "file://C:/x",
//   "file://C|/x" and "file:C:/x" are file URIs; "smb://host/x", which the
//   reader makes of "file://host/x", is the network path "//host/x";
// - a relative path is taken against the document's folder (a relative
//   document path is first taken against the current folder), and a path
//   starting with "/" is absolute; dot segments are removed.
// A Windows drive path ("C:/tex/a.png", "C:\tex\a.png") or a network path
// cannot be opened here as written. When the path is not an existing file,
// the document's folder DIR is searched for the path's tails, longest first:
// for "C:/work/tex/a.png" it tries "DIR/work/tex/a.png", "DIR/tex/a.png",
// then "DIR/a.png" (a tail starts after the last "." or ".." segment). The
// first existing regular file is the answer; when none exists, the path as
// written is returned: absolute for a local path, as written
// ("C:/tex/a.png", "//host/x") for the others.
OxKernel::oxString GetReferencedFilePath(const OxKernel::oxURI& document,
                                         const OxKernel::oxString& reference);

// True when `path`, as GetReferencedFilePath returns it, names an existing
// regular file here. A drive or network path never does, even when the
// current folder happens to hold a folder named "C:".
bool ReferencedFileExists(const OxKernel::oxString& path);

// The file `reference` names for `document`: GetReferencedFilePath of its
// URI for a document read from a file or from memory. For a document read
// from an archive, references name entries of that archive, never files
// outside it: the result is "ARCHIVE!/path/in/archive" (ARCHIVE the URI
// given to Load), the reference taken against the document's folder in the
// archive with %-escapes decoded. An absolute or drive path, or a relative
// one that climbs out of the archive, is searched by its tails as above
// among the entries; when nothing matches, the path as resolved is
// returned ("ARCHIVE!/../x.png" for a reference that climbs out). Empty for
// an empty reference or another scheme ("http:").
OxKernel::oxString GetReferencedFilePath(const oxDAEFile& document,
                                         const OxKernel::oxString& reference);

// The archive entry an "ARCHIVE!/entry" path of `document` names; empty
// for a document not read from an archive or a path outside it.
std::string_view GetArchiveEntryOfPath(const oxDAEFile& document, std::string_view path);

// True when `path`, as the function above returns it, names an existing
// file: an entry of the document's archive for an "ARCHIVE!/" path, else as
// ReferencedFileExists(path).
bool ReferencedFileExists(const oxDAEFile& document, const OxKernel::oxString& path);

}  // namespace OxDAEReader
