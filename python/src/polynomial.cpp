#include "arguments.h"

namespace nu::python {

namespace {

using Samples = nb::ndarray<const double, nb::ndim<1>, nb::c_contig, nb::device::cpu>;

CNuDoubleArray ToNumbers(const Samples& samples) {
  return python::ToNumbers(samples.data(), static_cast<int>(samples.shape(0)));
}

CNuPolynomial ToPolynomial(const Samples& coefficients) {
  const auto count = static_cast<int>(coefficients.shape(0));
  CNuPolynomial p(count - 1);
  for (int i = 0; i < count; ++i) p[i] = coefficients.data()[i];
  return p;
}

// (coefficients from the constant term on, sum of squared residuals)
std::tuple<Doubles, double> FitPolynomial(const Samples& x, const Samples& y, int degree) {
  CNuPolynomial p(degree);
  double sum = 0.0;
  {
    nb::gil_scoped_release released;
    p.Fit(ToNumbers(x), ToNumbers(y), &sum);
  }
  const auto count = static_cast<std::size_t>(p.GetDegree()) + 1;
  return {Owning<Doubles>(std::vector<double>(p.GetData(), p.GetData() + count), {count}), sum};
}

Doubles ValuesAt(const Samples& coefficients, const Samples& x) {
  const CNuPolynomial p = ToPolynomial(coefficients);
  std::vector<double> values(x.shape(0));
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = p.ValueAt(x.data()[i]);
  const std::size_t n = values.size();
  return Owning<Doubles>(std::move(values), {n});
}

}  // namespace

void BindPolynomial(nb::module_& m) {
  m.def("fit_polynomial", &FitPolynomial, nb::arg("x").noconvert(), nb::arg("y").noconvert(), nb::arg("degree"));
  m.def("polynomial_values", &ValuesAt, nb::arg("coefficients").noconvert(), nb::arg("x").noconvert());
}

}  // namespace nu::python
