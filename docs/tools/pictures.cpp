// Pictures of the manual that the program inspect does not draw: one profile under the four criteria, a polynomial, a
// wave, and what pairs of features have in common. pictures DIRECTORY/
#include <nu/nu.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <numbers>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;
const char* const kFeature = "#1b5aa6";
const char* const kSecond = "#1b7f4b";
const char* const kResult = "#c2271d";
const char* const kGrey = "#5c6670";

struct Place {
  double x, y;
};
using Path = std::vector<Place>;

class Picture {
 public:
  Picture(double width, double height, const std::string& title) {
    m_text << "<?xml version='1.0' encoding='UTF-8'?>\n<svg xmlns='http://www.w3.org/2000/svg' width='" << width
           << "' height='" << height << "' viewBox='0 0 " << width << ' ' << height
           << "' font-family='DejaVu Sans, Verdana, Arial, sans-serif'>\n<title>" << title << "</title>\n<rect width='"
           << width << "' height='" << height << "' fill='#ffffff'/>\n";
  }
  void Line(const Path& path, const char* colour, double width, const char* dash = "") {
    m_text << "<polyline fill='none' stroke='" << colour << "' stroke-width='" << width << "' stroke-linejoin='round'";
    if (*dash != 0) m_text << " stroke-dasharray='" << dash << "'";
    m_text << " points='";
    for (const Place& p : path) m_text << Number(p.x) << ',' << Number(p.y) << ' ';
    m_text << "'/>\n";
  }
  void Ring(Place centre, double radius, const char* colour, double width, const char* dash = "") {
    m_text << "<circle cx='" << Number(centre.x) << "' cy='" << Number(centre.y) << "' r='" << Number(radius)
           << "' fill='none' stroke='" << colour << "' stroke-width='" << width << "'";
    if (*dash != 0) m_text << " stroke-dasharray='" << dash << "'";
    m_text << "/>\n";
  }
  void Dot(Place p, double radius, const char* colour) {
    m_text << "<circle cx='" << Number(p.x) << "' cy='" << Number(p.y) << "' r='" << radius << "' fill='" << colour
           << "'/>\n";
  }
  void Text(Place p, const std::string& text, double size, const char* colour, const char* anchor = "middle") {
    m_text << "<text x='" << p.x << "' y='" << p.y << "' font-size='" << size << "' text-anchor='" << anchor
           << "' fill='" << colour << "'>" << text << "</text>\n";
  }
  void Write(const std::string& file) { std::ofstream(file, std::ios::binary) << m_text.str() << "</svg>\n"; }

 private:
  static std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
  }
  std::ostringstream m_text;
};

// A generator of its own: the same noise everywhere.
double Noise(unsigned& state) {
  state = state * 1664525u + 1013904223u;
  return state / 4294967296.0 - 0.5;
}

// ---- one profile under the four criteria

CNuPointArray Profile() {
  const int n = 120;
  CNuPointArray points(n);
  unsigned state = 7;
  for (int i = 0; i < n; ++i) {
    const double t = kTurn * i / n;
    const double dent = -0.09 * std::exp(-std::pow((t - 4.1) / 0.16, 2));
    const double r = 1.0 + 0.05 * std::cos(2.0 * t - 0.6) + 0.04 * std::cos(3.0 * t + 0.4) + 0.02 * std::cos(7.0 * t) +
                     dent + 0.008 * Noise(state);
    points.Add(CNuPoint(r * std::cos(t), r * std::sin(t), 0.0));
  }
  return points;
}

void DrawCriteria(const std::string& file) {
  const CNuPointArray points = Profile();
  const struct {
    ENuCriterion criterion;
    const char* title;
    const char* note;
  } panels[] = {{NuLeastSquares, "least squares (G)", "least sum of squares"},
                {NuMinimumZone, "minimum zone (C)", "narrowest ring"},
                {NuMinimumCircumscribed, "minimum circumscribed (N)", "smallest around"},
                {NuMaximumInscribed, "maximum inscribed (X)", "largest within"}};
  Picture picture(640, 700, "The same profile under the four criteria");
  int k = 0;
  for (const auto& panel : panels) {
    const int column = k % 2, row = k / 2;
    const Place middle{170.0 + 310.0 * column, 165.0 + 345.0 * row};
    const double scale = 115.0;
    const auto at = [&](const CNuPoint& p) { return Place{middle.x + scale * p.x(), middle.y - scale * p.y()}; };
    CNuAssociation association(points);
    association.SetDetails(NuDetailDeviations | NuDetailContacts);
    CNuCircle circle(1.0);
    const CNuAssociationReport report = association.Fit(panel.criterion, &circle);
    Path profile;
    for (int i = 0; i <= points.GetSize(); ++i) profile.push_back(at(points[i % points.GetSize()]));
    picture.Line(profile, kFeature, 1.6);
    const Place centre = at(circle.GetCentre());
    if (panel.criterion == NuMinimumZone) {
      picture.Ring(centre, scale * (circle.GetRadius() + report.GetPeak()), kResult, 1.2, "5 3");
      picture.Ring(centre, scale * (circle.GetRadius() - report.GetValley()), kResult, 1.2, "5 3");
    }
    picture.Ring(centre, scale * circle.GetRadius(), kSecond, 1.6);
    picture.Dot(centre, 2.5, kSecond);
    if (panel.criterion != NuLeastSquares)
      for (int i = 0; i < report.GetNumberContacts(); ++i)
        picture.Ring(at(points[report.GetContactPoints()[i]]), 5.0, "#22272e", 1.6);
    char numbers[80];
    std::snprintf(numbers, sizeof numbers, "%s: radius %.4f, form %.4f", panel.note, circle.GetRadius(),
                  report.GetForm());
    picture.Text({middle.x, middle.y + 150.0}, panel.title, 15, "#22272e");
    picture.Text({middle.x, middle.y + 168.0}, numbers, 11.5, kGrey);
    ++k;
  }
  picture.Write(file);
}

// ---- curves through samples

void DrawSamples(const std::string& file, const char* title, const CNuPointArray& points, double top,
                 const std::function<double(double)>& curve) {
  Picture picture(640, 300, title);
  const double x0 = points[0].x(), x1 = points[points.GetSize() - 1].x();
  const auto at = [&](double x, double y) {
    return Place{30.0 + 580.0 * (x - x0) / (x1 - x0), 150.0 - 125.0 * y / top};
  };
  picture.Line({at(x0, 0.0), at(x1, 0.0)}, "#c9ced4", 1.0);
  Path path;
  for (int i = 0; i <= 300; ++i) {
    const double x = x0 + (x1 - x0) * i / 300.0;
    path.push_back(at(x, curve(x)));
  }
  picture.Line(path, kSecond, 2.0);
  for (int i = 0; i < points.GetSize(); ++i) picture.Dot(at(points[i].x(), points[i].y()), 3.0, kFeature);
  picture.Write(file);
}

void DrawWave(const std::string& file) {
  CNuPointArray points(60);
  unsigned state = 3;
  double x = 0.0;
  for (int i = 0; i < 60; ++i) {
    x += 0.12 + 0.16 * (Noise(state) + 0.5);
    points.Add(CNuPoint(x, 1.3 * std::sin(1.9 * x + 0.4) + 0.2 + 0.4 * Noise(state), 0.0));
  }
  CNuSineCurve wave(1.0, 1.0, 0.0, 0.0);
  wave.Fit(points, 50);
  DrawSamples(file, "Samples of a wave and the fitted sine curve", points, 1.9,
              [&](double t) { return wave.ValueAt(t); });
}

void DrawPolynomial(const std::string& file) {
  const int n = 40;
  CNuPointArray points(n);
  CNuDoubleArray x(n), y(n);
  unsigned state = 11;
  for (int i = 0; i < n; ++i) {
    const double t = -1.0 + 2.0 * i / (n - 1);
    const double value = t * (t - 0.8) * (t + 0.9) * 1.4 + 0.25 * Noise(state);
    points.Add(CNuPoint(t, value, 0.0));
    x.Add(t);
    y.Add(value);
  }
  CNuPolynomial cubic(3);
  cubic.Fit(x, y);
  DrawSamples(file, "Samples and the fitted polynomial of degree 3", points, 1.0,
              [&](double t) { return cubic.ValueAt(t); });
}

// ---- pairs of features, seen from the side and a little from above

Place Project(const CNuVector& p) {
  const double azimuth = -0.55, elevation = 0.42;
  const double x = std::cos(azimuth) * p[0] + std::sin(azimuth) * p[1];
  const double depth = -std::sin(azimuth) * p[0] + std::cos(azimuth) * p[1];
  return {150.0 + 62.0 * x, 112.0 - 62.0 * (std::cos(elevation) * p[2] + std::sin(elevation) * depth)};
}

CNuVector Across(const CNuVector& w) {
  const CNuVector axis = std::fabs(w[0]) < 0.7 ? CNuVector(1.0, 0.0, 0.0) : CNuVector(0.0, 1.0, 0.0);
  CNuVector u = w * axis;
  return u * (1.0 / u.Magnitude());
}

class Pair {
 public:
  Pair(const std::string& file, const char* title) : m_file(file), m_picture(300, 240, title) {}
  ~Pair() { m_picture.Write(m_file); }

  void Ring(const CNuVector& centre, const CNuVector& w, double r, const char* colour, double width) {
    const CNuVector u = Across(w), v = w * u;
    Path path;
    for (int i = 0; i <= 72; ++i) {
      const double t = kTurn * i / 72;
      path.push_back(Project(centre + u * (r * std::cos(t)) + v * (r * std::sin(t))));
    }
    m_picture.Line(path, colour, width);
  }
  void Segment(const CNuVector& a, const CNuVector& b, const char* colour, double width, const char* dash = "") {
    m_picture.Line({Project(a), Project(b)}, colour, width, dash);
  }
  void Draw(const CNuPoint& p, const char* colour) { m_picture.Dot(Project(p.To3DVector()), 4.0, colour); }
  void Draw(const CNuLine& l, const char* colour, double half = 1.7) {
    const CNuVector p = l.GetPoint().To3DVector();
    Segment(p - l.GetDirection() * half, p + l.GetDirection() * half, colour, 1.8);
  }
  void Draw(const CNuPlane& plane, const CNuVector& middle, const char* colour, double half = 1.3) {
    const CNuVector u = Across(plane.GetNormal()), v = plane.GetNormal() * u;
    Path path;
    const double corners[][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}, {-1, -1}};
    for (const auto& c : corners) path.push_back(Project(middle + u * (half * c[0]) + v * (half * c[1])));
    m_picture.Line(path, colour, 1.8);
  }
  void Draw(const CNuCircle& c, const char* colour) {
    Ring(c.GetCentre().To3DVector(), c.GetNormal(), c.GetRadius(), colour, 1.8);
  }
  void Draw(const CNuSphSurf& s, const char* colour) {
    const CNuVector centre = s.GetCentre().To3DVector();
    m_picture.Ring(Project(centre), 62.0 * s.GetRadius(), colour, 1.8);
    Ring(centre, CNuVector(0.0, 0.0, 1.0), s.GetRadius(), colour, 0.6);
  }
  // From the height h0 to h1 over a point of the axis with the radii there.
  void Barrel(const CNuVector& p, const CNuVector& w, double h0, double r0, double h1, double r1, const char* colour) {
    const CNuVector u = Across(w), v = w * u;
    Ring(p + w * h0, w, r0, colour, 1.8);
    Ring(p + w * h1, w, r1, colour, 1.8);
    for (int i = 0; i < 12; ++i) {
      const double t = kTurn * i / 12;
      const CNuVector d = u * std::cos(t) + v * std::sin(t);
      Segment(p + w * h0 + d * r0, p + w * h1 + d * r1, colour, 0.6);
    }
  }
  void Draw(const CNuCylSurf& c, double radius, const char* colour, double half = 1.4) {
    Barrel(c.GetAxisPoint().To3DVector(), c.GetAxisDirection(), -half, radius, half, radius, colour);
  }
  void Path3(const CNuPointArray& points, const char* colour) {
    Path path;
    for (int i = 0; i < points.GetSize(); ++i) path.push_back(Project(points[i].To3DVector()));
    m_picture.Line(path, colour, 2.6);
  }
  // The result of an intersection: points, circles, ellipses and general curves; released.
  void Draw(CNuObjArray& objects) {
    for (int i = 0; i < objects.GetSize(); ++i) {
      const std::unique_ptr<CNuObject> object(objects[i]);
      if (const auto* p = dynamic_cast<const CNuPoint*>(object.get())) Draw(*p, kResult);
      if (const auto* c = dynamic_cast<const CNuCircle*>(object.get())) Path3(c->ToPointArray(121), kResult);
      if (const auto* e = dynamic_cast<const CNuEllipse*>(object.get())) Path3(e->ToPointArray(121), kResult);
      if (const auto* q = dynamic_cast<const CNuPCurve*>(object.get())) Path3(q->ToPointArray(241), kResult);
    }
    objects.Clear();
  }
  void Caption(const std::string& text) { m_picture.Text({150.0, 230.0}, text, 12, "#22272e"); }

 private:
  std::string m_file;
  Picture m_picture;
};

std::string Said(const char* form, double value) {
  char text[80];
  std::snprintf(text, sizeof text, form, value);
  return text;
}

void DrawPairs(const std::string& directory) {
  const auto name = [&](const char* pair) { return directory + "pair-" + pair + ".svg"; };
  const CNuPoint origin(0.0, 0.0, 0.0);
  const CNuVector z(0.0, 0.0, 1.0), x(1.0, 0.0, 0.0), oblique = CNuVector(0.3, 0.2, 1.0) * (1.0 / std::sqrt(1.13));
  const CNuLine line(CNuPoint(0.1, -0.3, -0.2), CNuVector(1.0, 0.25, 0.35));
  const CNuPlane floor(origin, z), tilted(CNuPoint(0.0, 0.0, 0.1), CNuVector(-0.15, -0.55, 1.0));
  const CNuSphSurf ball(1.1, origin);
  const CNuCylSurf tube(0.7, origin, z), across(0.5, CNuPoint(0.0, 0.1, 0.1), x);
  const CNuPoint apex(0.0, 0.0, 1.5);
  const CNuConSurf cone(25.0, apex, -z);
  const auto drawCone = [&](Pair& pair, const char* colour) {
    pair.Barrel(apex.To3DVector(), -z, 0.02, 0.01, 2.7, 2.7 * std::tan(25.0 * kTurn / 360.0), colour);
  };
  CNuObjArray common(4);

  {
    Pair pair(name("point-point"), "Two points and the point half-way between them");
    const CNuPoint a(-1.0, 0.0, -0.5), b(1.0, 0.4, 0.7);
    pair.Segment(a.To3DVector(), b.To3DVector(), kGrey, 1.0, "4 3");
    pair.Draw(a, kFeature), pair.Draw(b, kSecond), pair.Draw(a.MidPoint(b), kResult);
    pair.Caption(Said("distance %.4f", a.DistanceTo(b)));
  }
  {
    Pair pair(name("point-line"), "A point, a line and the foot of the point");
    const CNuPoint p(0.2, 0.4, 1.2), foot = p.ProjectionOn(line);
    pair.Draw(line, kSecond), pair.Draw(p, kFeature);
    pair.Segment(p.To3DVector(), foot.To3DVector(), kResult, 2.0), pair.Draw(foot, kResult);
    pair.Caption(Said("distance %.4f", p.DistanceTo(line)));
  }
  {
    Pair pair(name("point-plane"), "A point, a plane and the foot of the point");
    const CNuPoint p(0.2, 0.1, 1.4), foot = p.ProjectionOn(tilted);
    pair.Draw(tilted, CNuVector(0.0, 0.0, 0.1), kSecond), pair.Draw(p, kFeature);
    pair.Segment(p.To3DVector(), foot.To3DVector(), kResult, 2.0), pair.Draw(foot, kResult);
    pair.Caption(Said("distance %.4f", p.DistanceTo(tilted)));
  }
  {
    Pair pair(name("line-line"), "Two skew lines and their closest points");
    const CNuLine other(CNuPoint(0.0, 0.2, 0.9), CNuVector(-0.2, 1.0, 0.3));
    CNuPoint foot, otherFoot;
    line.ClosestPointsTo(other, &foot), other.ClosestPointsTo(line, &otherFoot);
    pair.Draw(line, kFeature), pair.Draw(other, kSecond);
    pair.Segment(foot.To3DVector(), otherFoot.To3DVector(), kResult, 2.0), pair.Draw(foot, kResult),
        pair.Draw(otherFoot, kResult);
    pair.Caption(Said("distance %.4f", line.DistanceTo(other)) + Said(", angle %.3f°", line.AngleWith(other)));
  }
  {
    Pair pair(name("line-plane"), "A line meets a plane");
    CNuPoint p;
    const CNuLine steep(CNuPoint(0.2, 0.0, 0.2), CNuVector(0.4, 0.1, 1.0));
    steep.IntersectWith(floor, &p);
    pair.Draw(floor, CNuVector(), kSecond), pair.Draw(steep, kFeature, 1.5), pair.Draw(p, kResult);
    pair.Caption(Said("angle %.3f°", steep.AngleWith(floor)));
  }
  {
    Pair pair(name("plane-plane"), "Two planes meet in a line");
    CNuLine l;
    floor.IntersectWith(tilted, &l);
    pair.Draw(floor, CNuVector(), kFeature), pair.Draw(tilted, CNuVector(0.0, 0.0, 0.1), kSecond),
        pair.Draw(l, kResult, 1.4);
    pair.Caption(Said("angle %.3f°", floor.AngleWith(tilted)));
  }
  const CNuCircle ring(1.1, origin, z);
  const auto drawTwo = [&](Pair& pair, int n, const CNuPoint& p, const CNuPoint& q) {
    if (n > 0) pair.Draw(p, kResult);
    if (n > 1) pair.Draw(q, kResult);
    pair.Caption(Said("%.0f points", n));
  };
  CNuPoint p, q;
  {
    Pair pair(name("line-circle"), "A line meets a circle");
    const CNuLine chord(CNuPoint(0.0, 0.3, 0.0), CNuVector(1.0, 0.2, 0.0));
    const int n = chord.IntersectWith(ring, &p, &q);
    pair.Draw(ring, kSecond), pair.Draw(chord, kFeature), drawTwo(pair, n, p, q);
  }
  {
    Pair pair(name("plane-circle"), "A plane meets a circle");
    const int n = ring.IntersectWith(tilted, &p, &q);
    pair.Draw(ring, kFeature), pair.Draw(tilted, CNuVector(0.0, 0.0, 0.1), kSecond), drawTwo(pair, n, p, q);
  }
  {
    Pair pair(name("circle-circle"), "Two circles in one plane meet");
    const CNuCircle other(0.8, CNuPoint(0.8, 0.4, 0.0), z);
    const int n = ring.IntersectWith(other, &p, &q);
    pair.Draw(ring, kFeature), pair.Draw(other, kSecond), drawTwo(pair, n, p, q);
  }
  {
    Pair pair(name("line-sphere"), "A line meets a sphere");
    const int n = line.IntersectWith(ball, &p, &q);
    pair.Draw(ball, kSecond), pair.Draw(line, kFeature), drawTwo(pair, n, p, q);
  }
  {
    Pair pair(name("line-cylinder"), "A line meets a cylinder");
    const int n = line.IntersectWith(tube, &p, &q);
    pair.Draw(tube, 0.7, kSecond), pair.Draw(line, kFeature), drawTwo(pair, n, p, q);
  }
  {
    Pair pair(name("line-cone"), "A line meets a cone");
    const int n = line.IntersectWith(cone, &p, &q);
    drawCone(pair, kSecond), pair.Draw(line, kFeature), drawTwo(pair, n, p, q);
  }
  const auto drawCommon = [&](Pair& pair, int n, const char* what) {
    pair.Draw(common), pair.Caption(Said("%.0f ", n) + what);
  };
  {
    Pair pair(name("plane-sphere"), "A plane cuts a sphere in a circle");
    const int n = tilted.IntersectWith(ball, &common);
    pair.Draw(ball, kSecond), pair.Draw(tilted, CNuVector(0.0, 0.0, 0.1), kFeature), drawCommon(pair, n, "CNuCircle");
  }
  {
    Pair pair(name("plane-cylinder"), "A plane cuts a cylinder in an ellipse");
    const int n = tilted.IntersectWith(tube, &common);
    pair.Draw(tube, 0.7, kSecond), pair.Draw(tilted, CNuVector(0.0, 0.0, 0.1), kFeature),
        drawCommon(pair, n, "CNuEllipse");
  }
  {
    Pair pair(name("plane-cone"), "A plane cuts a cone in an ellipse");
    const int n = tilted.IntersectWith(cone, &common);
    drawCone(pair, kSecond), pair.Draw(tilted, CNuVector(0.0, 0.0, 0.1), kFeature), drawCommon(pair, n, "CNuEllipse");
  }
  {
    Pair pair(name("sphere-sphere"), "Two spheres meet in a circle");
    const CNuSphSurf other(0.9, CNuPoint(0.9, 0.0, 0.5));
    const int n = ball.IntersectWith(other, &common);
    pair.Draw(ball, kFeature), pair.Draw(other, kSecond), drawCommon(pair, n, "CNuCircle");
  }
  {
    Pair pair(name("sphere-cylinder"), "A sphere and a cylinder meet in a curve");
    const CNuSphSurf other(1.1, CNuPoint(0.45, 0.0, 0.0));
    const int n = other.IntersectWith(tube, &common);
    pair.Draw(other, kFeature), pair.Draw(tube, 0.7, kSecond), drawCommon(pair, n, "CNuPCurve");
  }
  {
    Pair pair(name("sphere-cone"), "A sphere and a cone meet in a curve");
    const CNuSphSurf other(0.8, CNuPoint(0.3, 0.0, 0.0));
    const int n = other.IntersectWith(cone, &common);
    pair.Draw(other, kFeature), drawCone(pair, kSecond), drawCommon(pair, n, "CNuPCurve");
  }
  {
    Pair pair(name("cylinder-cylinder"), "Two cylinders meet in two curves");
    const int n = tube.IntersectWith(across, &common);
    pair.Draw(tube, 0.7, kFeature), pair.Draw(across, 0.5, kSecond, 1.6), drawCommon(pair, n, "CNuPCurve");
  }
  {
    Pair pair(name("cylinder-cone"), "A cylinder and a cone meet in curves");
    const CNuCylSurf pin(0.4, CNuPoint(0.0, 0.1, -0.1), x);
    const int n = pin.IntersectWith(cone, &common);
    pair.Draw(pin, 0.4, kFeature, 1.6), drawCone(pair, kSecond), drawCommon(pair, n, "CNuPCurve");
  }
  {
    Pair pair(name("cone-cone"), "Two cones meet in a curve");
    const CNuConSurf other(20.0, CNuPoint(-2.0, 0.1, -0.2), x);
    const int n = other.IntersectWith(cone, &common);
    pair.Barrel(CNuVector(-2.0, 0.1, -0.2), x, 0.02, 0.01, 3.6, 3.6 * std::tan(20.0 * kTurn / 360.0), kFeature);
    drawCone(pair, kSecond), pair.Draw(common), pair.Caption(Said("%.0f CNuPCurve", n));
  }
}

}  // namespace

int main(int count, char** arguments) {
  const std::string directory = count > 1 ? arguments[1] : "";
  try {
    DrawCriteria(directory + "criteria.svg");
    DrawWave(directory + "wave.svg");
    DrawPolynomial(directory + "polynomial.svg");
    DrawPairs(directory);
  } catch (const CNuException& failure) {
    std::fprintf(stderr, "%s: %s\n", failure.m_szWhere, NuCauseText(failure));
    return 1;
  }
}
