#include "nu/association/criteria.h"

const char* NuCriterionLetter(ENuCriterion criterion) {
  switch (criterion) {
    case NuLeastSquares:
      return "G";
    case NuMinimumZone:
      return "C";
    case NuMinimumCircumscribed:
      return "N";
    case NuMaximumInscribed:
      return "X";
  }
  return "";
}

const char* NuCriterionName(ENuCriterion criterion) {
  switch (criterion) {
    case NuLeastSquares:
      return "least squares";
    case NuMinimumZone:
      return "minimum zone";
    case NuMinimumCircumscribed:
      return "minimum circumscribed";
    case NuMaximumInscribed:
      return "maximum inscribed";
  }
  return "";
}
