#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace Zorvic::Internal {

/// Records in order of their keys, made to be published again and again: what Share() gives never changes, and the next
/// one has all of it in common but the stretches in which a record was set or erased. So a change costs hardly more in
/// a list of ten thousand than in one of a hundred. KeyOf{}(record) is the key.
template <class Record, class KeyOf>
class RecordList {
public:
    void Set(Record record);
    template <class Key>
    void Erase(const Key& key);
    void Clear();
    /// The list as it is now, for any thread.
    std::shared_ptr<const RecordList> Share();

    std::size_t Size() const { return Count; }
    /// Null when there is none.
    template <class Key>
    const Record* Find(const Key& key) const;
    template <class Action>
    void ForEach(Action&& action) const;

private:
    static constexpr std::size_t MostInStretch = 128;

    struct Stretch {
        std::uint64_t Round = 0;
        std::vector<Record> Records;  // never empty
    };

    template <class Key>
    std::size_t StretchOf(const Key& key) const;
    template <class Key, class Records>
    static auto PlaceOf(const Key& key, Records& records);
    Stretch& OwnStretch(std::size_t number);
    void Split(std::size_t number);

    std::vector<std::shared_ptr<Stretch>> Stretches;
    std::uint64_t Round = 1;  // stretches of this round have not been shared yet
    std::size_t Count = 0;
};

template <class Record, class KeyOf>
void RecordList<Record, KeyOf>::Set(Record record) {
    if (Stretches.empty()) Stretches.push_back(std::make_shared<Stretch>(Stretch{Round, {}}));
    const auto& key = KeyOf{}(record);
    const std::size_t number = StretchOf(key);
    auto& records = OwnStretch(number).Records;
    const auto place = PlaceOf(key, records);
    if (place != records.end() && KeyOf{}(*place) == key) {
        *place = std::move(record);
        return;
    }
    records.insert(place, std::move(record));
    ++Count;
    if (records.size() > MostInStretch) Split(number);
}

template <class Record, class KeyOf>
template <class Key>
void RecordList<Record, KeyOf>::Erase(const Key& key) {
    if (!Find(key)) return;
    const std::size_t number = StretchOf(key);
    auto& records = OwnStretch(number).Records;
    records.erase(PlaceOf(key, records));
    if (records.empty()) Stretches.erase(Stretches.begin() + static_cast<std::ptrdiff_t>(number));
    --Count;
}

template <class Record, class KeyOf>
void RecordList<Record, KeyOf>::Clear() {
    Stretches.clear();
    Count = 0;
}

template <class Record, class KeyOf>
std::shared_ptr<const RecordList<Record, KeyOf>> RecordList<Record, KeyOf>::Share() {
    ++Round;
    return std::make_shared<const RecordList>(*this);
}

template <class Record, class KeyOf>
template <class Key>
const Record* RecordList<Record, KeyOf>::Find(const Key& key) const {
    if (Stretches.empty()) return nullptr;
    const auto& records = std::as_const(Stretches[StretchOf(key)]->Records);
    const auto place = PlaceOf(key, records);
    return place != records.end() && KeyOf{}(*place) == key ? &*place : nullptr;
}

template <class Record, class KeyOf>
template <class Action>
void RecordList<Record, KeyOf>::ForEach(Action&& action) const {
    for (const auto& stretch : Stretches)
        for (const Record& record : stretch->Records)
            action(record);
}

// The last one that begins at the key or before; the first one for a key before all others.
template <class Record, class KeyOf>
template <class Key>
std::size_t RecordList<Record, KeyOf>::StretchOf(const Key& key) const {
    const auto after =
        std::upper_bound(Stretches.begin(), Stretches.end(), key, [](const Key& sought, const auto& stretch) {
            return !stretch->Records.empty() && sought < KeyOf{}(stretch->Records.front());
        });
    return after == Stretches.begin() ? 0 : static_cast<std::size_t>(after - Stretches.begin()) - 1;
}

template <class Record, class KeyOf>
template <class Key, class Records>
auto RecordList<Record, KeyOf>::PlaceOf(const Key& key, Records& records) {
    return std::lower_bound(records.begin(), records.end(), key,
                            [](const Record& record, const Key& sought) { return KeyOf{}(record) < sought; });
}

template <class Record, class KeyOf>
typename RecordList<Record, KeyOf>::Stretch& RecordList<Record, KeyOf>::OwnStretch(std::size_t number) {
    auto& stretch = Stretches[number];
    if (stretch->Round != Round) stretch = std::make_shared<Stretch>(Stretch{Round, stretch->Records});
    return *stretch;
}

template <class Record, class KeyOf>
void RecordList<Record, KeyOf>::Split(std::size_t number) {
    auto& records = Stretches[number]->Records;
    const auto half = records.begin() + static_cast<std::ptrdiff_t>(records.size() / 2);
    auto second = std::make_shared<Stretch>(
        Stretch{Round, {std::make_move_iterator(half), std::make_move_iterator(records.end())}});
    records.erase(half, records.end());
    Stretches.insert(Stretches.begin() + static_cast<std::ptrdiff_t>(number) + 1, std::move(second));
}

}  // namespace Zorvic::Internal
