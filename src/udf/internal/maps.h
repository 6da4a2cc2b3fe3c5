/// Operations on maps that several families share.
#ifndef ZN_INTERNAL_MAPS_H
#define ZN_INTERNAL_MAPS_H

#include <type_traits>
#include <utility>

namespace zn_lib::internal {

/// Moves the entries of `source` into `target`. They replace existing entries with the same keys.
/// The comparison functions of the maps may have different types, but must define the same order.
template <class Source, class Target>
void moveEntries(Source& source, Target& target) {
  if constexpr (std::is_same_v<Source, Target>) {
    if (target.empty()) return target.swap(source);
  }
  // Since both maps have the same order, most entries belong directly after the previous one.
  auto place = target.begin();
  while (!source.empty()) {
    auto node = source.extract(source.begin());
    auto& entry = node.mapped();
    place = target.insert(place, std::move(node));
    // If the key exists, the node is not inserted, and still holds the entry.
    if (&place->second != &entry) place->second = std::move(entry);
    ++place;
  }
}

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_MAPS_H
