#include "options.h"

// The reductions of parts of a cloud, which travel between processes as bytes.
namespace nu::python {

namespace {

nb::bytes BytesOf(const CNuAssociationPart& part) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(part.GetNumberBytes()));
  part.GetBytes(bytes.data());
  return nb::bytes(bytes.data(), bytes.size());
}

CNuAssociationPart PartOf(const nb::bytes& bytes) {
  return CNuAssociationPart::FromBytes(static_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
}

}  // namespace

void BindParts(nb::module_& m) {
  nb::class_<CNuAssociationPart>(m, "Part")
      .def(nb::init<>())
      .def(
          "__init__",
          [](CNuAssociationPart* part, const PointsArgument& points, const WeightsArgument& weights,
             const Options& options, const Feature& feature, const Triple& middle) {
            const Job job = ToJob(points, weights);
            nb::gil_scoped_release released;
            new (part) CNuAssociationPart(AssociationOf(job, options), AsGeometry(feature), middle.Point());
          },
          nb::arg("points").noconvert(), nb::arg("weights").none(), nb::arg("options"), nb::arg("feature"),
          nb::arg("middle"))
      .def("join", &CNuAssociationPart::Join, nb::arg("other"))
      .def(
          "step",
          [](const CNuAssociationPart& part, const Feature& feature) {
            Feature moved = feature;
            const double length = part.Step(&AsGeometry(moved));
            return std::make_tuple(moved, length);
          },
          nb::arg("feature"))
      .def_prop_ro("n_points", &CNuAssociationPart::GetNumberPoints)
      .def_prop_ro("sum_squares", &CNuAssociationPart::GetSumSquares)
      .def_prop_ro("rms", &CNuAssociationPart::GetRootMeanSquare)
      .def_prop_ro("largest_deviation", &CNuAssociationPart::GetLargestDeviation)
      .def_prop_ro("smallest_deviation", &CNuAssociationPart::GetSmallestDeviation)
      .def("__getstate__", &BytesOf)
      .def("__setstate__",
           [](CNuAssociationPart& part, const nb::bytes& bytes) { new (&part) CNuAssociationPart(PartOf(bytes)); });
  m.def("length_tolerance", &NuGetLengthTol);
  nb::class_<CNuAssociationCandidates>(m, "Candidates")
      .def(nb::init<>())
      .def("add", &CNuAssociationCandidates::Add, nb::arg("joined"))
      .def(
          "fit",
          [](const CNuAssociationCandidates& candidates, int criterion, const Feature& feature) {
            Feature moved = feature;
            const double value = candidates.Fit(static_cast<ENuCriterion>(criterion), &AsGeometry(moved));
            return std::make_tuple(moved, value);
          },
          nb::arg("criterion"), nb::arg("feature"));
}

}  // namespace nu::python
