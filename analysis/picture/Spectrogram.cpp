#include "analysis/picture/Spectrogram.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <thread>

#include "analysis/picture/Cells.h"
#include "analysis/picture/ColourMap.h"
#include "analysis/picture/PixelFont.h"
#include "base/Png.h"
#include "base/Text.h"
#include "core/params/Options.h"

namespace synth::analysis {
namespace {

constexpr int leftMargin = 44, rightMargin = 8, topMargin = 24, bottomMargin = 8;
// Between panels, with the label of the lower one in it.
constexpr int gap = 18;
constexpr int pixelsPerSemitone = 5, lowestPanel = 120, highestPanel = 900;
constexpr int pixelsPerSecond = 80, narrowest = 600, widest = 1800;
constexpr int leastWidth = 120, mostWidth = 16384;
constexpr double lowestHz = 10, highestHz = sampleRate / 2.0;
constexpr double shortestSpanS = 0.05, differenceDb = 24;

constexpr Colour page{0x0E, 0x11, 0x1A}, ink{0xE6, 0xE9, 0xF2}, faintInk{0x8A, 0x92, 0xA8};

double opacityOf(TickWeight weight) {
  return weight == TickWeight::Bar ? 0.34 : weight == TickWeight::Beat ? 0.18 : 0.09;
}

// A line that lets the picture shine through: light over dark cells, dark over light ones.
void rule(Canvas& canvas, Rect area, double opacity) {
  constexpr Colour light{0xC8, 0xD4, 0xFF}, dark{0x10, 0x06, 0x18};
  constexpr int bright = 380;  // of red + green + blue
  for (int y = area.y; y < area.y + area.height; y++)
    for (int x = area.x; x < area.x + area.width; x++) {
      const Colour below = canvas.at(x, y);
      const bool onBright = below.red + below.green + below.blue > bright;
      canvas.fill({x, y, 1, 1}, onBright ? dark : light, opacity);
    }
}

Axes axesOf(std::span<const Audio* const> audios, const PictureSettings& settings) {
  double endS = 0;
  for (const Audio* audio : audios) endS = std::max(endS, audio->seconds());
  if (!(endS > 0)) throw std::runtime_error("Nothing to draw");
  Axes axes;
  axes.fminHz = std::max(settings.fminHz, lowestHz);
  axes.fmaxHz = std::min(settings.fmaxHz, highestHz);
  if (!(axes.fmaxHz > axes.fminHz)) throw std::runtime_error("--fmax must be above --fmin");
  axes.fromS = std::max(settings.fromS, 0.0);
  axes.toS = settings.toS > 0 ? std::min(settings.toS, endS) : endS;
  const double span = axes.toS - axes.fromS;
  if (!(span >= shortestSpanS - 1e-9)) throw std::runtime_error("The time span is shorter than 50 ms");
  const int width =
      settings.width > 0
          ? std::clamp(settings.width, leastWidth, mostWidth)
          : int(std::clamp(std::floor(span * pixelsPerSecond + 0.5), double(narrowest), double(widest)));
  axes.columns = width - leftMargin - rightMargin;
  const double height = std::floor(12 * axes.octaves() * pixelsPerSemitone + 0.5);
  axes.rows = int(std::clamp(height, double(lowestPanel), double(highestPanel)));
  return axes;
}

// An empty picture with room for the panels.
Picture laidOut(const Axes& axes, std::size_t panels, bool firstLabelled) {
  const int top = topMargin + (firstLabelled ? gap : 0);
  std::vector<Rect> plots;
  for (int i = 0; i < int(panels); i++)
    plots.push_back({leftMargin, top + i * (axes.rows + gap), axes.columns, axes.rows});
  const int height = plots.back().y + axes.rows + bottomMargin;
  return {Canvas(leftMargin + axes.columns + rightMargin, height, page), axes, plots, 0};
}

void drawNotes(Picture& picture, const Rect& plot) {
  const Axes& axes = picture.axes;
  const double semitone = axes.rows / (12 * axes.octaves());
  // Every C, and where notes have room for their names every note.
  const int every = semitone >= font::height + 3 ? 1 : 12;
  const auto hz = [](int pitch) { return 440 * math::exp2((pitch - 69) / 12.0); };
  const int first = int(std::ceil(69 + 12 * math::log2(axes.fminHz / 440) - 1e-9));
  for (int pitch = (first + every - 1) / every * every; hz(pitch) <= axes.fmaxHz * 1.0000001;
       pitch += every) {
    const int y = plot.y + std::clamp(int(std::floor(axes.y(hz(pitch)))), 0, plot.height - 1);
    const bool isC = pitch % 12 == 0;
    rule(picture.canvas, {plot.x, y, plot.width, 1}, isC ? 0.22 : 0.07);
    picture.canvas.horizontal(plot.x - 4, y, 4, isC ? ink : faintInk);
    const std::string name = param::options::keyRoot[2 + pitch % 12] + std::to_string(pitch / 12 - 1);
    const int textY = std::clamp(y - font::height / 2, plot.y, plot.y + plot.height - font::height);
    picture.canvas.text(plot.x - 8 - font::textWidth(name), textY, name, isC ? ink : faintInk);
  }
}

void drawTimes(Picture& picture, const std::vector<Tick>& ticks) {
  for (const Tick& tick : ticks) {
    const int x = leftMargin + int(std::floor(picture.axes.x(tick.seconds) + 1e-6));
    for (const Rect& plot : picture.plots)
      rule(picture.canvas, {x, plot.y, 1, plot.height}, opacityOf(tick.weight));
    const int right = picture.canvas.width() - 2;
    if (tick.label.empty() || x + 3 + font::textWidth(tick.label) > right) continue;
    const int top = picture.plots.front().y;
    picture.canvas.vertical(x, top - 10, 9, faintInk);
    picture.canvas.text(x + 3, top - 10, tick.label, tick.weight == TickWeight::Step ? faintInk : ink);
  }
}

// The colours and the levels at their ends, at the right of the header where it leaves room.
void drawScale(Picture& picture, double dbRange, int headerEnd) {
  constexpr int length = 72, y = 4;
  const std::string low = text::print("%.0f", picture.loudestDb - dbRange);
  const std::string high = text::print("%.0f DB", picture.loudestDb);
  const int highX = picture.canvas.width() - rightMargin - font::textWidth(high);
  const int barX = highX - 5 - length, lowX = barX - 5 - font::textWidth(low);
  if (lowX < headerEnd + 18) return;
  picture.canvas.text(lowX, y, low, faintInk);
  picture.canvas.text(highX, y, high, faintInk);
  for (int x = 0; x < length; x++)
    picture.canvas.vertical(barX + x, y, font::height, levelColour((x + 0.5) / length));
}

void drawFrame(Picture& picture, const PictureSettings& settings, std::span<const std::string> labels) {
  const Axes& axes = picture.axes;
  const bool bars = settings.bars && settings.bars->bpm > 0;
  const std::string header =
      text::print("%.2f-%.2f S  %.0f-%.0f HZ  %.0f DB%s", axes.fromS, axes.toS, axes.fminHz, axes.fmaxHz,
                  settings.dbRange, bars ? "  BAR NUMBERS ON TOP" : "  SECONDS ON TOP");
  picture.canvas.text(leftMargin, 4, header, ink);
  drawScale(picture, settings.dbRange, leftMargin + font::textWidth(header));
  for (const Rect& plot : picture.plots) drawNotes(picture, plot);
  drawTimes(picture, bars ? barTicks(axes, *settings.bars) : secondTicks(axes));
  for (std::size_t i = 0; i < std::min(labels.size(), picture.plots.size()); i++) {
    const Rect& plot = picture.plots[i];
    const int y = plot.y - gap + (i == 0 ? -6 : 6);
    picture.canvas.text(plot.x, y, labels[i], ink, {plot.x, y, plot.width, font::height});
  }
}

std::vector<Cells> measured(std::span<const Audio* const> audios, const Axes& axes, int threads) {
  if (threads < 1) threads = int(std::max(1u, std::thread::hardware_concurrency()));
  std::vector<Cells> panels;
  for (const Audio* audio : audios) panels.push_back(measureCells(*audio, axes, threads));
  return panels;
}

// The top of the colour scale; its bottom never sinks below silence, which stays dark.
double loudest(const std::vector<Cells>& panels, double dbRange) {
  float most = silenceDb;
  for (const Cells& cells : panels)
    most = std::max(most, *std::max_element(cells.db.begin(), cells.db.end()));
  return std::max(double(most), silenceDb + dbRange);
}

// Colours every cell of a plot by `colour(column, row)`.
void paint(Canvas& canvas, const Rect& plot, auto colour) {
  for (int row = 0; row < plot.height; row++)
    for (int column = 0; column < plot.width; column++)
      canvas.set(plot.x + column, plot.y + row, colour(column, row));
}

void paintLevels(Picture& picture, std::size_t panel, const Cells& cells, double dbRange) {
  const double bottom = picture.loudestDb - dbRange;
  paint(picture.canvas, picture.plots[panel],
        [&](int column, int row) { return levelColour((cells.at(column, row) - bottom) / dbRange); });
}

void write(const std::string& path, const Picture& picture) {
  std::string error;
  if (!writePng(path, picture.canvas.width(), picture.canvas.height(), picture.canvas.rgb(), error))
    throw std::runtime_error(error);
}

}  // namespace

Picture drawSpectrogram(std::span<const Audio* const> audios, std::span<const std::string> labels,
                        const PictureSettings& settings) {
  const Axes axes = axesOf(audios, settings);
  const std::vector<Cells> panels = measured(audios, axes, settings.threads);
  Picture picture = laidOut(axes, panels.size(), !labels.empty() && !labels.front().empty());
  picture.loudestDb = loudest(panels, settings.dbRange);
  for (std::size_t i = 0; i < panels.size(); i++) paintLevels(picture, i, panels[i], settings.dbRange);
  drawFrame(picture, settings, labels);
  return picture;
}

Picture drawDifference(const Audio& reference, const Audio& render, const PictureSettings& settings) {
  static const std::string labels[] = {"REFERENCE", "RENDER",
                                       "DIFFERENCE, +-24 DB: RENDER LOUDER IS RED, QUIETER BLUE"};
  const Audio* const audios[] = {&reference, &render};
  const Axes axes = axesOf(audios, settings);
  const std::vector<Cells> panels = measured(audios, axes, settings.threads);
  Picture picture = laidOut(axes, 3, true);
  picture.loudestDb = loudest(panels, settings.dbRange);
  for (std::size_t i = 0; i < 2; i++) paintLevels(picture, i, panels[i], settings.dbRange);
  const float bottom = float(picture.loudestDb - settings.dbRange);
  paint(picture.canvas, picture.plots[2], [&](int column, int row) {
    const float from = std::max(panels[0].at(column, row), bottom),
                to = std::max(panels[1].at(column, row), bottom);
    return differenceColour((double(to) - double(from)) / differenceDb);
  });
  drawFrame(picture, settings, labels);
  return picture;
}

void spectrogramImage(const std::string& path, std::span<const Audio* const> audios,
                      std::span<const std::string> labels, const PictureSettings& settings) {
  write(path, drawSpectrogram(audios, labels, settings));
}

void differenceImage(const std::string& path, const Audio& reference, const Audio& render,
                     const PictureSettings& settings) {
  write(path, drawDifference(reference, render, settings));
}

}  // namespace synth::analysis
