#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace vorp {

class ErrorHandler;
class IdStrings;
class VormLabel;

// The records of ".expr": small expression nodes over symbols that the linker evaluates after
// layout. Records are written in the order they were made.
class VormLinkerExps {
public:
    enum OperandType { OPERAND_CONSTANT = 0, OPERAND_SYMBOL = 1, OPERAND_STRING = 2 };

    // Records written directly by directives: the operation shifted left by 6, with the types of
    // the operands packed below it (S symbol, s string, c constant).
    enum LinkOp : std::int32_t {
        LINKOP_CALLS_S = 769,
        LINKOP_GLOBPASSESREF_Ss = 841,
        LINKOP_GLOBREAD_Ssc = 969,
        LINKOP_GLOBWRITE_Ssc = 1033,
        LINKOP_STACKSIZE_S = 1089,
        LINKOP_CALLDEPTH_S = 1153,
        LINKOP_MAXTHREADS_S = 1217,
        LINKOP_MAXTIMERS_S = 1281,
        LINKOP_MAXCHANENDS_S = 1345,
        LINKOP_MAXSYNC_S = 1409,
        LINKOP_ACTNOSIDE_S = 1473,
        LINKOP_LOCNOSIDE_S = 1537,
        LINKOP_PAR_Ss = 1609,
        LINKOP_ACTNOCHANDEC_S = 1921,
        LINKOP_LOCNOCHANDEC_S = 1985,
        LINKOP_PARWRITE_Ssc = 2249,
        LINKOP_PRAGMA_S = 3073,
        LINKOP_SIZE_cS = 3012,
        LINKOP_INLINED_s = 3138,
    };

    struct Operand {
        OperandType type = OPERAND_CONSTANT;
        std::int32_t constant = 0;
        VormLabel* symbol = nullptr;
        const char* string = nullptr;
    };

    // `kind` packs the operation (bits 6 and up) and the type of each operand (two bits each, from
    // bit 0). The add operations fill the next operand, set its type bits, and chain.
    struct Expression {
        std::int32_t kind = 0;
        VormLabel* label = nullptr;
        std::uint32_t numOps = 0;
        Operand ops[3];
        // Where string operands are interned.
        IdStrings* strings = nullptr;

        Expression& addConstOp(std::int32_t value);
        Expression& addSymOp(VormLabel* sym);
        Expression& addStrOp(const char* string);
    };

    // String operands are interned in `strings`.
    VormLinkerExps(ErrorHandler* errorHandler, IdStrings& strings);

    Expression& addExp(std::int32_t kind, VormLabel* label);
    const std::vector<std::unique_ptr<Expression>>& getExpressions() const { return m_expressions; }

private:
    IdStrings& m_strings;
    std::vector<std::unique_ptr<Expression>> m_expressions;
};

} // namespace vorp
