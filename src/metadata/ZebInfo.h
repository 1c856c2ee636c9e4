#pragma once

#include <string>
#include <vector>

namespace vorp {

class DataWriter;
class VormAssembler;
class VormLabel;

// Records of the timing directives. A guard label is the record's location when the directive
// stood inside an elimination block, else null; guarded records go with the code they describe.
struct ZebBranch {
    VormLabel* location;
    VormLabel* target;
    int targetOffset;
    VormLabel* guard;
};

struct ZebMarker {
    VormLabel* location;
    const char* first;
    const char* second;
    const char* third;
    unsigned value;
    VormLabel* guard;
};

struct ZebThreadDelimiter {
    VormLabel* location;
    VormLabel* guard;
};

struct ZebLoop {
    VormLabel* location;
    unsigned count;
    VormLabel* guard;
};

struct ZebCommand {
    const char* command;
    const char* compilationDir;
    const char* fileName;
    unsigned lineNumber;

    const char* getCommand() const { return command; }
    const char* getCompilationDir() const { return compilationDir; }
    const char* getFileName() const { return fileName; }
    unsigned getLineNumber() const { return lineNumber; }
};

struct ZebSystem {
    const char* functionName;
    const char* compilationDir;
    const char* fileName;
    unsigned lineNumber;

    const char* getFunctionName() const { return functionName; }
    const char* getCompilationDir() const { return compilationDir; }
    const char* getFileName() const { return fileName; }
    unsigned getLineNumber() const { return lineNumber; }
};

// What the timing directives collected, written as the timing-analysis sections at the end of the
// directive expansion.
class ZebInfo {
public:
    ZebInfo() = default;
    ZebInfo(const ZebInfo&) = delete;
    ZebInfo& operator=(const ZebInfo&) = delete;
    ~ZebInfo();

    std::vector<ZebBranch*> branches;
    std::vector<ZebMarker*> endpoints;
    std::vector<ZebMarker*> labels;
    std::vector<ZebMarker*> calls;
    std::vector<ZebThreadDelimiter*> threadStarts;
    std::vector<ZebThreadDelimiter*> threadStops;
    std::vector<ZebCommand*> commands;
    std::vector<ZebSystem*> systems;
    std::vector<ZebLoop*> loops;

    // Creates the sections that have records, in a fixed order.
    void encode(VormAssembler& assembler);

private:
    void encodeCommand(VormAssembler& assembler);
    void encodeSystem(VormAssembler& assembler);
    void encodeBranch(VormAssembler& assembler);
    void encodeLoop(VormAssembler& assembler);
    void encodeThread(VormAssembler& assembler, const std::vector<ZebThreadDelimiter*>& records,
                      const char* sectionName);
    void encodeMarker(VormAssembler& assembler, const std::vector<ZebMarker*>& records, const char* sectionName);

    // A guarded record sits in an elimination block of its own whose predicate is the guard, so the
    // linker drops the record with the code it describes.
    static void beginRecord(DataWriter& writer, const VormLabel* location, const VormLabel* guard);
    static void endRecord(DataWriter& writer, const VormLabel* guard);
    // "<name>.zeb.<n>", numbered over the whole run.
    static std::string genCCTopLabel(VormAssembler& assembler, const std::string& name);
};

} // namespace vorp
