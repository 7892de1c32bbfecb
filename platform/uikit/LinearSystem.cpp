#include "platform/uikit/LinearSystem.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace zorvik::platform {

namespace {

// Factors of layout equations are halves and ones; what is smaller than this is rounding.
constexpr double rounding = 1e-9;

}  // namespace

LinearSystem::LinearSystem(std::size_t variables)
    : rowOf_(variables, open), factors_(variables, 0), isTouched_(variables, 0) {}

void LinearSystem::accumulate(std::size_t variable, double factor) {
    factors_[variable] += factor;
    if (isTouched_[variable]) return;
    isTouched_[variable] = 1;
    touched_.push_back(variable);
    if (rowOf_[variable] == open) return;
    toReplace_.push_back(rowOf_[variable]);
    std::push_heap(toReplace_.begin(), toReplace_.end(), std::greater<>());
}

// A row mentions only variables that were solved after it, so replacing the earliest first meets
// each row once.
LinearSystem::Row LinearSystem::reduce(const std::vector<Term>& terms) {
    Row result;
    for (const Term& term : terms)
        accumulate(term.variable, term.factor);
    while (!toReplace_.empty()) {
        std::pop_heap(toReplace_.begin(), toReplace_.end(), std::greater<>());
        const std::size_t row = toReplace_.back();
        toReplace_.pop_back();
        const double factor = factors_[solved_[row]];
        result.constant += factor * rows_[row].constant;
        for (const Term& term : rows_[row].terms) {
            accumulate(term.variable, factor * term.factor);
        }
    }
    for (const std::size_t variable : touched_) {
        const bool isOpen = rowOf_[variable] == open;
        if (isOpen && std::abs(factors_[variable]) > rounding) {
            result.terms.push_back({variable, factors_[variable]});
        }
        factors_[variable] = 0;
        isTouched_[variable] = 0;
    }
    touched_.clear();
    return result;
}

void LinearSystem::solveFor(const Row& expression, double constant) {
    if (expression.terms.empty()) return;
    // Later variables belong to views further down: solving for them keeps the rows short.
    const auto pivot = std::max_element(
        expression.terms.begin(), expression.terms.end(), [](const Term& a, const Term& b) {
            const double difference = std::abs(a.factor) - std::abs(b.factor);
            return std::abs(difference) > rounding ? difference < 0 : a.variable < b.variable;
        });
    Row row;
    row.constant = (constant - expression.constant) / pivot->factor;
    for (const Term& term : expression.terms) {
        if (term.variable == pivot->variable) continue;
        row.terms.push_back({term.variable, -term.factor / pivot->factor});
    }
    rowOf_[pivot->variable] = rows_.size();
    solved_.push_back(pivot->variable);
    rows_.push_back(std::move(row));
}

void LinearSystem::add(const std::vector<Term>& terms, double constant) {
    solveFor(reduce(terms), constant);
}

LinearSystem::Row& LinearSystem::reducedRow(std::size_t variable) {
    Row& row = rows_[rowOf_[variable]];
    if (row.terms.empty()) return row;
    Row reduced = reduce(row.terms);
    reduced.constant += row.constant;
    return row = std::move(reduced);
}

void LinearSystem::addDefault(std::size_t variable, double value) {
    if (rowOf_[variable] == open) {
        solveFor({{{variable, 1}}, 0}, value);
    } else {
        solveFor(reducedRow(variable), value);
    }
}

double LinearSystem::value(std::size_t variable) {
    return rowOf_[variable] == open ? 0 : reducedRow(variable).constant;
}

}  // namespace zorvik::platform
