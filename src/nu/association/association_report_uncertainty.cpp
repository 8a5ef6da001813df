#include <algorithm>
#include <cmath>

#include "nu/association/association_report.h"
#include "nu/association/internal/parameters.h"
#include "nu/association/internal/report_data.h"
#include "nu/engine/base/elementary.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/linalg/matrix.h"

using namespace nu::internal;

namespace {

const Covariance& CovarianceIn(const ReportData& data, const char* where) {
  RequireDetail(data, NuDetailUncertainty, where);
  if (!data.covariance) FailOperation(NuOperationUnsupported, kReport, where);
  return *data.covariance;
}

Unknown UnknownAt(const ReportData& data, int i, const char* where) {
  const Covariance& covariance = CovarianceIn(data, where);
  RequireIndex(i, covariance.unknowns, kReport, where);
  return covariance.unknown[i];
}

}  // namespace

void CNuAssociationReport::GetParameterFrame(CNuPoint* origin, CNuVector* x, CNuVector* y, CNuVector* z) const {
  CovarianceIn(Data(), "GetParameterFrame");
  const AxisFrame& frame = Data().feature.frame;
  Output(origin, ToPoint(frame.origin));
  Output(x, ToVector(frame.x));
  Output(y, ToVector(frame.y));
  Output(z, ToVector(frame.z));
}

int CNuAssociationReport::GetNumberParameters() const {
  return CovarianceIn(Data(), "GetNumberParameters").unknowns;
}

const char* CNuAssociationReport::GetParameterName(int i) const {
  return NameOf(Data().feature.kind, UnknownAt(Data(), i, "GetParameterName"));
}

ENuBoolean CNuAssociationReport::IsParameterAngle(int i) const {
  return IsAngle(Data().feature.kind, UnknownAt(Data(), i, "IsParameterAngle")) ? NuTrue : NuFalse;
}

double CNuAssociationReport::GetStandardUncertainty(int i) const {
  const Unknown unknown = UnknownAt(Data(), i, "GetStandardUncertainty");
  return StandardUncertainty(*Data().covariance, UnknownGradient(unknown, UnitOf(Data().feature.kind, unknown)));
}

CNuMatrix CNuAssociationReport::GetCovariance() const {
  const Covariance& covariance = CovarianceIn(Data(), "GetCovariance");
  double plain[kUnknowns][kUnknowns];
  FillCovariance(covariance, covariance.sigma, plain);
  const int n = std::max(covariance.unknowns, 1);
  CNuMatrix matrix(n, n);
  for (int i = 0; i < covariance.unknowns; ++i)
    for (int j = 0; j < covariance.unknowns; ++j) {
      const FeatureKind kind = Data().feature.kind;
      matrix.Element(i, j) = UnitOf(kind, covariance.unknown[i]) * UnitOf(kind, covariance.unknown[j]) * plain[i][j];
    }
  return matrix;
}

int CNuAssociationReport::GetDegreesOfFreedom() const {
  return static_cast<int>(CovarianceIn(Data(), "GetDegreesOfFreedom").degreesOfFreedom);
}

double CNuAssociationReport::GetStandardDeviation() const {
  return CovarianceIn(Data(), "GetStandardDeviation").sigma;
}

double CNuAssociationReport::GetCondition() const {
  return CovarianceIn(Data(), "GetCondition").condition;
}

// The largest variance of a direction across the axis is the larger eigenvalue of the 2 x 2 covariance there.
double CNuAssociationReport::GetAxisUncertainty(double height) const {
  constexpr const char* where = "GetAxisUncertainty";
  const Covariance& covariance = CovarianceIn(Data(), where);
  const FeatureKind kind = Data().feature.kind;
  const bool hasAxis = kind == FeatureKind::line || kind == FeatureKind::cylinder || kind == FeatureKind::cone ||
                       kind == FeatureKind::torus;
  if (!hasAxis) FailOperation(NuOperationUnsupported, kReport, where);
  const auto variance = [&](double x, double y) {
    const double u = StandardUncertainty(covariance, AxisPointGradient(height, x, y));
    return u * u;
  };
  const double half = std::sqrt(0.5);
  const double xx = variance(1.0, 0.0);
  const double yy = variance(0.0, 1.0);
  const double xy = variance(half, half) - 0.5 * (xx + yy);
  if (!std::isfinite(xx + yy)) return xx + yy;
  return std::sqrt(0.5 * (xx + yy) + Hypot(0.5 * (xx - yy), xy));
}

double CNuAssociationReport::GetSurfaceUncertainty(const CNuPoint& place) const {
  const Covariance& covariance = CovarianceIn(Data(), "GetSurfaceUncertainty");
  return StandardUncertainty(covariance, SurfaceGradient(Data().feature, Components(place)));
}
