#pragma once

#include <cstddef>
#include <vector>

namespace zorvik::platform {

// Linear equations over numbered variables, solved as they come in: the first ones win. An
// equation that those before it already imply or contradict changes nothing.
class LinearSystem {
  public:
    struct Term {
        std::size_t variable;
        double factor;
    };

    explicit LinearSystem(std::size_t variables);

    // sum of factor * variable = constant.
    void add(const std::vector<Term>& terms, double constant);
    // Gives the variable this value unless the equations so far determine another one.
    void addDefault(std::size_t variable, double value);
    // The value of a variable; what is still open in it counts as zero.
    double value(std::size_t variable);

  private:
    // A solved variable: constant + sum of terms, over variables that were open at the time.
    struct Row {
        std::vector<Term> terms;
        double constant = 0;
    };

    void accumulate(std::size_t variable, double factor);
    Row reduce(const std::vector<Term>& terms);
    Row& reducedRow(std::size_t variable);
    void solveFor(const Row& expression, double constant);

    static constexpr std::size_t open = static_cast<std::size_t>(-1);

    std::vector<Row> rows_;               // in the order in which they were solved
    std::vector<std::size_t> rowOf_;      // by variable
    std::vector<std::size_t> solved_;     // by row: its variable
    std::vector<double> factors_;         // by variable; all zero between reductions
    std::vector<char> isTouched_;         // by variable; all zero between reductions
    std::vector<std::size_t> touched_;    // variables
    std::vector<std::size_t> toReplace_;  // rows, a heap with the earliest on top
};

}  // namespace zorvik::platform
