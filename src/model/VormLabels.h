#pragma once

#include "diag/Location.h"
#include "model/VormLabel.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vorp {

class VorpErrorHandler;

// The table of all labels. Named labels are found through a map; every label, named or not, stands
// in one vector whose order fixes the order of finalisation and of the symbol table.
class VormLabels {
public:
    explicit VormLabels(VorpErrorHandler* errorHandler);
    VormLabels(const VormLabels&) = delete;
    VormLabels& operator=(const VormLabels&) = delete;
    virtual ~VormLabels();

    VorpErrorHandler& getErrorHandler() const { return *m_errorHandler; }

    VormLabel* findLabel(const char* name) const;
    // The one way a name comes into being by reference. A required reference makes a tentative
    // label required; nothing weakens a label.
    VormLabel* getOrAddLabel(const char* name, bool required, bool branchTarget);
    VormLabel* getOrTentativelyAddLabel(const char* name, bool branchTarget);
    VormLabel* getOrAddRequiredLabel(const char* name, bool branchTarget);

    VormLabel* addExternLabel(const char* name, const char* typeString);
    VormLabel* addLocalLabel(const char* name, const char* typeString);
    // Global unless already weak.
    VormLabel* addGlobalLabel(const char* name, const char* typeString);
    VormLabel* addWeakLabel(const char* name);

    // Defines a name; a second definition is error 45 and wins all the same. Visibility, size and
    // the branch-target mark of an earlier mention survive.
    VormLabel* addDefinedLabel(const Location& location, const char* name, VormLabel* alias, VormLine* line,
                               std::uint32_t value, SymbolType type);
    VormLabel* addDefinedLabel(const char* name, VormLine* target);
    VormLabel* addAlignLabel(const char* name, VormLine* target);
    VormLabel* addAbsoluteLabel(const Location& location, const char* name, std::uint32_t value);
    VormLabel* addLinksetLabel(const Location& location, const char* name);
    // Being aliased makes the target a branch target.
    VormLabel* addAliasLabel(const Location& location, const char* name, const char* targetName);

    VormLabel* addUniqueDefinedLabel(VormLabel* alias, VormLine* line, std::uint32_t value, SymbolType type);
    VormLabel* addUniqueDefinedLabel(VormLine* target);
    VormLabel* addUniqueAlignLabel(VormLine* target);
    VormLabel* addUniqueLinksetLabel();
    VormLabel* addUniqueUndefinedLabel();

    // The path of source labels: error 45 over an existing definition, which is replaced.
    void defineLabel(VormLabel* label, VormLine* line);
    // Gives a nameless label the stable name ".Ldefined.<line id>" of its target line.
    void ensureLabelName(VormLabel* label);

    void finaliseLabels();
    void finaliseLabel(VormLabel* label);
    bool labelsFinalised() const { return m_labelsFinalised; }
    // ".L<n>", skipping names the source took.
    std::string genUniqueLabelName();

    const std::vector<std::unique_ptr<VormLabel>>& getAllLabels() const { return m_allLabels; }
    void displayLabels() const;

private:
    VormLabel* append(std::unique_ptr<VormLabel> label);
    void insertName(VormLabel* label);
    void reportDuplicate(const Location& location, const VormLabel* label);

    std::vector<std::unique_ptr<VormLabel>> m_allLabels;
    // Keys view the labels' own names, which never change once a label is in the table.
    std::unordered_map<std::string_view, VormLabel*> m_nameLabelMap;
    VorpErrorHandler* m_errorHandler;
    bool m_labelsFinalised = false;
    int m_labelCounter = 0;
    // Counts changes to what alias chains of this table resolve to; labels keep resolved chains
    // of the present generation.
    std::uint64_t m_aliasGeneration = 1;
};

} // namespace vorp
