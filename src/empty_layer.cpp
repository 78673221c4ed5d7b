// Stands in for a layer that has no sources yet, so that its library can still be linked.
namespace cvd::detail {
[[maybe_unused]] static const int empty_layer_marker = 0;
} // namespace cvd::detail
