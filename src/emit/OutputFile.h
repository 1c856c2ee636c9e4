#pragma once

#include <cstdio>
#include <string>
#include <sys/types.h>

namespace vorp {

class ErrorHandler;

// A file the run writes: the object or the listing. An output that is a regular file, or doesn't
// exist yet, is written to a temporary file in the same folder, which replaces it only when it is
// complete: no reader, and no interrupted run, ever leaves a partial file under the output name.
// Anything else (a device, a pipe) is written in place, and so is an output in a folder where no
// new file can be made.
class OutputFile {
public:
    OutputFile() = default;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    // Whatever wasn't committed is discarded.
    ~OutputFile();

    // False, with errno telling why, when the file can't be created.
    bool open(const char* name);
    // Null before open() and after close().
    std::FILE* stream() const { return m_stream; }
    // Notes that a write to the stream just failed; the first failure's errno is the reason given.
    void writeFailed();
    // Flushes and closes the stream. False if this or any earlier write failed.
    bool close();
    // Moves a closed temporary over the output name. False, with the reason kept, if that fails.
    bool commit();
    // Closes the stream and removes the temporary, if any. An output written in place stays.
    void discard();

    const std::string& name() const { return m_name; }
    bool failed() const { return m_error != 0; }
    // True when the output is a device or pipe, written in place.
    bool isDevice() const { return m_device; }
    // Reports the failure: "vorp: Error: unable to write 'NAME': REASON".
    void reportFailure(ErrorHandler& errors) const;

    // Removes every temporary not yet committed. Only unlink() on fixed buffers: a signal handler
    // may call it.
    static void removeTemporaries();

private:
    // Creates the temporary, with the permissions of the file it will replace (0 for none); the
    // descriptor, or -1 with errno set.
    int createTemporary(mode_t earlierMode);

    std::string m_name;
    std::string m_temporary;
    std::FILE* m_stream = nullptr;
    bool m_device = false;
    int m_error = 0;
    int m_slot = -1; // where the temporary's name is kept for removeTemporaries
};

} // namespace vorp
