#ifndef NU_INSPECT_RELATIONS_H
#define NU_INSPECT_RELATIONS_H

#include <string>

#include "evaluate/geometry.h"
#include "evaluate/part_result.h"

// A value and how it follows from the points, a phrase.
struct Measured {
  double value;
  std::string evaluation;
};

// The characteristics that relate a feature to another one: distances, angles in degrees, zones of orientation and
// location as in ISO 1101. Each throws FitFailure.
//
// Zones of planes and lines hold all points; zones of cylinders and cones hold the fitted axis as far as the surface
// was measured, because its median line cannot be known from scattered points.
Measured MeasureDistance(const FeatureGeometry& feature, const FeatureGeometry& to);
Measured MeasureAngle(const FeatureGeometry& feature, const FeatureGeometry& to, bool obtuse);
Measured MeasureParallelism(const FeatureGeometry& feature, const FeatureGeometry& datum);
Measured MeasurePerpendicularity(const FeatureGeometry& feature, const FeatureGeometry& datum);
Measured MeasureCoaxiality(const FeatureGeometry& feature, const FeatureGeometry& datum);
Measured MeasureConcentricity(const FeatureGeometry& feature, const FeatureGeometry& datum);

// The zone lies at the exact angle, in degrees, to the datum: between two planes, of an axis a cylinder, turned about
// the datum's direction so that it is the narrowest.
Measured MeasureAngularity(const FeatureGeometry& feature, const FeatureGeometry& datum, double exactAngle);

// About the datum plane.
Measured MeasureSymmetry(const FeatureGeometry& feature, const FeatureGeometry& datum);

// How far the points run out about the datum axis: of a circle and of a cylinder across it, of a plane along it.
Measured MeasureRunout(const FeatureGeometry& feature, const FeatureGeometry& datum);

// In a datum frame, null for the coordinates of the files.
Measured MeasureCoordinate(const FeatureGeometry& feature, const DatumFrameResult* frame, std::size_t axis);
Measured MeasurePosition(const FeatureGeometry& feature, const DatumFrameResult* frame, const CharacteristicPlan& plan);

#endif
