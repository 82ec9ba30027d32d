#include "hosts/qfc/effects/ParameterMoves.h"

#include <algorithm>
#include <cmath>

namespace qfc::host {

namespace {

constexpr double kLeastStep = 0.1;

std::vector<ParameterValue> NumbersToTry(double start) {
    std::vector<double> numbers =
        start > 0.5 ? std::vector{0.0, 1.0, 0.25, 0.5, 0.75} : std::vector{1.0, 0.0, 0.75, 0.5, 0.25};
    std::vector<ParameterValue> values;
    for (const double number : numbers)
        if (std::abs(number - start) >= kLeastStep) values.emplace_back(number);
    return values;
}

struct ValuesToTry {
    std::vector<ParameterValue> operator()(bool start) const { return {!start}; }
    std::vector<ParameterValue> operator()(double start) const { return NumbersToTry(start); }
    std::vector<ParameterValue> operator()(const ParameterColour& start) const {
        std::vector<ParameterValue> values;
        // The last one is that of bright stone and fur, for what looks for a colour.
        for (const ParameterColour colour : {ParameterColour{1, 0, 0}, ParameterColour{0, 0, 1},
                                             ParameterColour{0, 1, 0}, ParameterColour{0.5f, 0.5f, 0.5f}})
            if (!(colour == start)) values.emplace_back(colour);
        return values;
    }
    std::vector<ParameterValue> operator()(const ParameterPosition& start) const {
        std::vector<ParameterValue> values;
        for (const ParameterPosition position : {ParameterPosition{0.25, 0.25}, ParameterPosition{0.75, 0.75},
                                                 ParameterPosition{0, 0}, ParameterPosition{1, 1}})
            if (!(position == start)) values.emplace_back(position);
        return values;
    }
    std::vector<ParameterValue> operator()(const std::string&) const { return {}; }
};

MovedParameter Move(std::size_t index, const ParameterValue& value) {
    return {static_cast<std::uint16_t>(index), value};
}

// The n-th value of every parameter that has so many.
Moves AllTogether(const std::vector<std::vector<ParameterValue>>& values, std::size_t n) {
    Moves moves;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (n < values[i].size()) moves.push_back(Move(i, values[i][n]));
    return moves;
}

}  // namespace

std::vector<Moves> MovesToTry(const std::vector<ProbedParameter>& parameters) {
    constexpr std::size_t kMostPairs = 1000;
    std::vector<std::vector<ParameterValue>> values;
    std::size_t most = 0;
    for (const ProbedParameter& parameter : parameters) {
        values.push_back(std::visit(ValuesToTry{}, parameter.defaultValue));
        most = std::max(most, values.back().size());
    }
    std::vector<Moves> tries;
    for (std::size_t n = 0; n < most; ++n)
        for (std::size_t i = 0; i < values.size(); ++i)
            if (n < values[i].size()) tries.push_back({Move(i, values[i][n])});
    for (std::size_t n = 0; n < most; ++n)
        if (Moves all = AllTogether(values, n); all.size() > 1) tries.push_back(std::move(all));
    const std::size_t end = tries.size() + kMostPairs;
    for (std::size_t i = 0; i < values.size(); ++i)
        for (std::size_t j = i + 1; j < values.size(); ++j)
            for (const ParameterValue& first : values[i])
                for (const ParameterValue& second : values[j])
                    if (tries.size() < end) tries.push_back({Move(i, first), Move(j, second)});
    return tries;
}

}  // namespace qfc::host
