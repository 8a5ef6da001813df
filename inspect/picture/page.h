#ifndef NU_INSPECT_PAGE_H
#define NU_INSPECT_PAGE_H

#include <string>
#include <vector>

#include "evaluate/inspection.h"
#include "picture/canvas.h"
#include "picture/pictures.h"

// A triangle with its tip at `tip`, pointing in `direction` (a unit vector on the page).
void DrawMarker(Canvas& canvas, PagePoint tip, PagePoint direction);
inline constexpr PagePoint kUpwards{0, -1};
inline constexpr PagePoint kDownwards{0, 1};

// A page with its title on top, the result in a panel on the right, and room for the picture on the left.
class Page {
 public:
  static constexpr double kWidth = 260;
  static constexpr double kHeight = 176;
  static constexpr double kLeft = 10;
  static constexpr double kRight = 176;
  static constexpr double kTop = 27;
  static constexpr double kBottom = 168;

  Page(const Inspection& inspection, const PictureLabels& labels);

  Canvas& Drawing() { return m_canvas; }

  // Page millimetres per length unit that show `span` in at most `room` of paper, by a round magnification. The panel
  // states it.
  double ChooseMagnification(double span, double room, const std::string& name);

  void StateMagnification(double scale, const std::string& name);

  // Below the rows of the result: a note; a line or a marker with what it means.
  void Note(const std::string& text);
  void LineKey(const char* attributes, const std::string& text);
  // A mark around each point that holds the feature, by the boundary that it touches, and what the marks mean.
  // onPage(contact) gives the places of one.
  template<typename OnPage>
  void DrawContacts(const OnPage& onPage) {
    for (const bool outer : {true, false}) {
      std::vector<PagePoint> places;
      for (const Contact& contact : m_inspection.contacts) {
        if (contact.outer != outer) continue;
        const std::vector<PagePoint> marks = onPage(contact.index);
        places.insert(places.end(), marks.begin(), marks.end());
      }
      MarkContacts(places, outer);
    }
    TellPoints(onPage);
  }
  // Where points are, for a page that tells about them, if that is asked for.
  template<typename OnPage>
  void TellPoints(const OnPage& onPage) {
    if (m_labels.readOut == nullptr) return;
    std::string list;
    for (const std::size_t index : PointsToTell()) {
      for (const PagePoint& at : onPage(index)) list += (list.empty() ? "" : ",") + ReadOutText(at, index);
    }
    m_canvas.ReadOut("[" + list + "]");
  }
  // Markers at the points of the largest and the smallest deviation; onPage(index) is the place of one.
  template<typename OnPage>
  void MarkExtremes(const OnPage& onPage) {
    DrawMarker(m_canvas, onPage(m_inspection.IndexOfMax()), kDownwards);
    DrawMarker(m_canvas, onPage(m_inspection.IndexOfMin()), kUpwards);
  }
  void ExtremeKeys(const std::string& whereMax, const std::string& whereMin);

  // What each of the lines beside a fitted curve stands for, in the corner below on the left; the deviations reach
  // `band` to either side, at `scale` page millimetres per length unit.
  void DrawRuler(double band, double scale, const Ticks& lines);

  // The largest magnitude of the deviations, never 0: what a scale has to show.
  double LargestDeviation() const { return m_largest; }

  // A length of the input in the unit of the deviations, with sign and unit.
  std::string DeviationText(double deviation) const;
  // A length of the input without its unit, short.
  std::string LengthText(double length) const;
  double PerLength() const { return m_deviationUnit.perLength; }
  const char* DeviationSymbol() const { return m_deviationUnit.symbol; }
  const char* LengthSymbol() const { return m_unit.symbol; }

 private:
  void MarkContacts(const std::vector<PagePoint>& places, bool outer);
  std::vector<std::size_t> PointsToTell() const;
  std::string ReadOutText(PagePoint at, std::size_t index) const;
  void DrawTitle(const Inspection& inspection, const PictureLabels& labels);
  void DrawVerdict(const PictureLabels& labels);
  void DrawRows(const PictureLabels& labels);

  const Inspection& m_inspection;
  const PictureLabels& m_labels;
  double m_largest;
  LengthUnit m_unit;
  DeviationUnit m_deviationUnit;
  Canvas m_canvas;
  double m_panelY = kTop + 4;
  double m_rowHeight;  // of the panel
};

// One value along a profile.
struct Sample {
  double position;
  double value;
};

// The samples in order of position; of each of `bins` equal parts only the least and the greatest value if there are
// many more, so that no extreme is lost.
std::vector<Sample> Envelope(std::vector<Sample> samples, std::size_t bins);

#endif
