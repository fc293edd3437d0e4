#include "catalogue.h"

#include <algorithm>
#include <cstdlib>

namespace catalogue {

namespace {

std::vector<Row>& mutableRows() {
    static std::vector<Row> all;
    return all;
}

const Call::Value& find(const Call& call, const std::string& name) {
    for (const auto& value : call.values)
        if (value.name == name) return value;
    std::abort();  // a row names an argument that it does not have
}

}  // namespace

std::int64_t draw(Random& random, std::int64_t low, std::int64_t high) {
    const auto span = static_cast<std::uint64_t>(high - low) + 1;
    switch (random() % 16) {
        case 0:
            return low;
        case 1:
            return high;
        default:
            return low + static_cast<std::int64_t>(random() % span);
    }
}

std::int64_t Call::operator[](const std::string& name) const { return find(*this, name).integer; }
VekiSize Call::size(const std::string& name) const { return find(*this, name).size; }

bool addRow(Row row) {
    mutableRows().push_back(std::move(row));
    return true;
}

const std::vector<Row>& rows() {
    auto& all = mutableRows();
    if (!std::is_sorted(all.begin(), all.end(), [](const Row& a, const Row& b) { return a.name < b.name; }))
        std::sort(all.begin(), all.end(), [](const Row& a, const Row& b) { return a.name < b.name; });
    return all;
}

}  // namespace catalogue
