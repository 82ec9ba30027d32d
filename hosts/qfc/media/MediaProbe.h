#pragma once

#include <string_view>

namespace qfc::host {

// Decides which of FFmpeg's readers a file may be given to. The content tells the reader, the name only helps where
// that is not enough: FFmpeg takes plain text for a film of typed letters, and knows readers that open further files or
// addresses. Functions without state; any thread.

enum class ReaderUse {
    Refused,
    Film,    // films and sounds; the streams tell which
    Picture  // one picture, however many the file holds
};

// By FFmpeg's name for the reader, which may be several spellings separated by commas.
ReaderUse UseOfReader(std::string_view reader);

// Whether one of the reader's spellings is the name.
bool IsReaderCalled(std::string_view reader, std::string_view name);

// The reader that the extension of a path promises, without case; empty for names that promise no media.
std::string_view PromisedReader(std::string_view path);

// The content of such files has no mark, or not always one, that a reader could tell them by: the promise decides.
bool IsKnownByNameAlone(std::string_view reader);

// The reader takes files of other kinds for its own, so both name and content have to tell it.
bool IsOnlyAsPromised(std::string_view reader);

// Whether files for the reader may be plain text: drawings made of words and numbers.
bool IsReaderOfText(std::string_view reader);

// Whether a file that begins so is text, which is media only when its name promises it.
bool IsText(std::string_view head);

// Whether a file that begins so is a still picture in a container for films.
bool IsStillPicture(std::string_view head);

}  // namespace qfc::host
