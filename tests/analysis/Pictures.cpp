// What breaks if a picture of sound shows a note, a hit or a bar line somewhere else than it is.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <stdexcept>

#include "analysis/picture/Cells.h"
#include "analysis/picture/ColourMap.h"
#include "analysis/picture/PixelFont.h"
#include "analysis/picture/Spectrogram.h"
#include "base/Math.h"
#include "support/PngReader.h"
#include "support/TempFolder.h"

namespace synth::analysis {
namespace {

using test::TempFolder;

Audio sounding(double seconds, const std::function<double(double)>& at) {
  Audio audio;
  for (int i = 0; i < int(seconds * sampleRate + 0.5); i++)
    audio.left.push_back(float(at(double(i) / sampleRate)));
  audio.right = audio.left;
  return audio;
}

double sine(double hz, double t) { return std::sin(2 * math::pi * hz * t); }

Axes plane(double seconds, int columns, double fmin = 30, double fmax = 8000) {
  Axes axes{0, seconds, fmin, fmax, columns, 1};
  axes.rows = int(axes.octaves() * 60);
  return axes;
}

int loudestRow(const Cells& cells, int column, int from, int to) {
  int best = from;
  for (int row = from; row < to; row++)
    if (cells.at(column, row) > cells.at(column, best)) best = row;
  return best;
}

double semitones(double a, double b) { return 12 * std::log2(a / b); }

Picture one(const Audio& audio, const PictureSettings& settings, std::vector<std::string> labels = {}) {
  const Audio* const audios[] = {&audio};
  return drawSpectrogram(audios, labels, settings);
}

int brightness(Colour c) { return c.red + c.green + c.blue; }

std::string errorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(Pictures, ASineLiesAtItsFrequencyAndLevel) {
  const Axes axes = plane(2, 150, 30, 16000);
  // Through every window, at borders between them, and where rows are wider than bins.
  for (double hz : {40.0, 110.0, 130.0, 440.0, 520.0, 1999.0, 3000.0, 7777.0, 15000.0}) {
    const Cells cells = measureCells(sounding(2, [&](double t) { return sine(hz, t); }), axes, 1);
    for (int column : {60, 75}) {
      const int row = loudestRow(cells, column, 0, axes.rows);
      EXPECT_LT(std::abs(semitones(axes.hz(row + 0.5), hz)), 0.5) << hz;
      EXPECT_LT(cells.at(column, row), 0.05) << hz;
      EXPECT_GT(cells.at(column, row), -1.6) << hz;  // a Hann window's worst between two bins
    }
  }
}

TEST(Pictures, NeighbouringNotesShowApart) {
  const Axes axes = plane(2, 150);
  for (double hz : {110.0, 220.0, 880.0, 2600.0}) {
    const double upper = hz * std::exp2(1 / 12.0);
    const Cells cells =
        measureCells(sounding(2, [&](double t) { return 0.4 * (sine(hz, t) + sine(upper, t)); }), axes, 1);
    const int low = int(axes.y(hz)), high = int(axes.y(upper));
    ASSERT_GT(low - high, 2);
    float valley = 0;
    for (int row = high; row <= low; row++) valley = std::min(valley, cells.at(75, row));
    EXPECT_GT(cells.at(75, low), valley + 6) << hz;
    EXPECT_GT(cells.at(75, high), valley + 6) << hz;
  }
}

TEST(Pictures, AHitShowsWhereItIsAndIsNeverMissed) {
  const auto hit = [](double t) { return t >= 1.3 && t < 1.31 ? sine(5000, t) : 0; };
  const Axes fine = plane(3, 240);
  const Cells cells = measureCells(sounding(3, hit), fine, 1);
  const int row = int(fine.y(5000));
  int best = 0;
  for (int c = 0; c < fine.columns; c++)
    if (cells.at(c, row) > cells.at(best, row)) best = c;
  EXPECT_NEAR(best, fine.x(1.305), 1.01);
  EXPECT_LT(cells.at(best + 8, row), -100);  // sharp to 100 ms
  // A second a column, the hit at the edge of its window or between two.
  for (double offset : {0.0, 0.02, 0.1, 0.4}) {
    const Axes coarse{0, 60, 30, 8000, 60, 480};
    const Audio audio = sounding(3, [&](double t) { return hit(t - offset); });
    EXPECT_GT(measureCells(audio, coarse, 1).at(1, row), cells.at(best, row) - 6.5) << offset;
  }
}

TEST(Pictures, SoundOutsideTheSpanAndOutsideTheAudioIsRespected) {
  const Audio audio = sounding(2, [](double t) { return t < 1 ? sine(1000, t) : 0; });
  Axes axes = plane(1, 80);
  axes.fromS = 1.3;
  axes.toS = 2.3;
  const Cells after = measureCells(audio, axes, 1);
  EXPECT_LT(after.at(40, int(axes.y(1000))), silenceDb + 0.01);
  EXPECT_LT(after.at(79, axes.rows - 1), silenceDb + 0.01);
  axes.fromS = 0;
  axes.toS = 1;
  const Cells during = measureCells(audio, axes, 1);
  const int row = int(axes.y(1000));
  EXPECT_GT(during.at(40, row), -1.6);
  EXPECT_GT(during.at(0, row), -8);  // half a window
  Audio sides = audio;
  for (float& x : sides.right) x = -x;
  const Cells cancelled = measureCells(sides, axes, 1);
  EXPECT_LT(*std::max_element(cancelled.db.begin(), cancelled.db.end()), silenceDb + 0.01);
}

TEST(Pictures, DoNotDependOnTheThreads) {
  unsigned state = 1;
  const Audio noise = sounding(5, [&](double) {
    state = state * 1664525u + 1013904223u;
    return double(state) / 4294967296.0 - 0.5;
  });
  for (int width : {600, 161}) {
    PictureSettings settings;
    settings.width = width;
    settings.bars = BarLines{120, 0.1};
    settings.threads = 1;
    const Picture alone = one(noise, settings);
    for (int threads : {2, 3}) {
      settings.threads = threads;
      const Picture together = one(noise, settings);
      EXPECT_TRUE(std::ranges::equal(alone.canvas.rgb(), together.canvas.rgb())) << width << " " << threads;
    }
  }
}

TEST(Pictures, PanelsShareOneColourScale) {
  const Audio loud = sounding(2, [](double t) { return 0.5 * sine(1000, t); });
  const Audio soft = sounding(2, [](double t) { return 0.05 * sine(1000, t); });
  const Audio* const audios[] = {&soft, &loud};
  const std::string labels[] = {"REFERENCE", "RENDER"};
  const Picture picture = drawSpectrogram(audios, labels, {});
  ASSERT_EQ(picture.plots.size(), 2u);
  EXPECT_NEAR(picture.loudestDb, -6, 1.6);
  const auto brightest = [&](const Rect& plot) {
    Colour most;
    for (int y = 0; y < plot.height; y++) {
      const Colour here = picture.canvas.at(plot.x + 270, plot.y + y);
      if (brightness(here) > brightness(most)) most = here;
    }
    return most;
  };
  EXPECT_EQ(brightest(picture.plots[1]), levelColour(1));
  EXPECT_EQ(brightest(picture.plots[0]), levelColour(1 - 20.0 / 80));
}

TEST(Pictures, TheDifferenceIsRedWhereTheRenderIsLouder) {
  const auto mix = [](double low, double high) {
    return sounding(2, [=](double t) { return low * sine(200, t) + high * sine(2000, t); });
  };
  const Picture picture = drawDifference(mix(0.1, 0.4), mix(0.4, 0.1), {});
  ASSERT_EQ(picture.plots.size(), 3u);
  const Rect& plot = picture.plots[2];
  const auto at = [&](double hz) {
    return picture.canvas.at(plot.x + 270, plot.y + int(picture.axes.y(hz)));
  };
  EXPECT_GT(at(200).red, at(200).blue + 90);
  EXPECT_GT(at(2000).blue, at(2000).red + 90);
  EXPECT_EQ(at(7000), differenceColour(0));
  const Picture alike = drawDifference(mix(0.3, 0.3), mix(0.3, 0.3), {});
  for (int y = 0; y < plot.height; y++) {
    const Colour c = alike.canvas.at(plot.x + 270, plot.y + y);
    EXPECT_LE(c.red, c.blue) << y;  // black, or a grid line over it
  }
}

TEST(Pictures, LinesStandAtBarsBeatsAndSteps) {
  const Audio silence = sounding(9, [](double) { return 0; });
  PictureSettings settings;
  settings.fromS = 0.5;
  settings.bars = BarLines{100, 1.0};
  const Picture picture = one(silence, settings);
  const Rect& plot = picture.plots[0];
  const double columnS = 8.5 / plot.width;
  const auto column = [&](double seconds) {
    const int x = plot.x + int((seconds - 0.5) / columnS + 1e-6);
    return brightness(picture.canvas.at(x, plot.y + 10));
  };
  const int nothing = brightness(levelColour(0));
  for (int step = -3; step < 52; step++) {
    const double seconds = 1.0 + step * 0.15;
    EXPECT_EQ(column(seconds + 0.075), nothing) << step;
    const int lower = step % 4 != 0 ? nothing : step % 16 != 0 ? column(1.15) : column(1.6);
    EXPECT_GT(column(seconds), lower) << step;
  }
  // A line through every C and none between.
  for (double hz : {32.703, 65.406, 261.626, 4186.0}) {
    const int y = plot.y + int(picture.axes.y(hz));
    EXPECT_GT(brightness(picture.canvas.at(plot.x + 1, y)), nothing) << hz;
    EXPECT_EQ(brightness(picture.canvas.at(plot.x + 1, y - 9)), nothing) << hz;
  }
}

TEST(Pictures, LabelsNeverTouchAndTicksStayInside) {
  for (double from : {0.0, 59.37, 7000.0})
    for (double span : {0.05, 0.3, 1.0, 8.0, 33.0, 180.0, 5000.0})
      for (int columns : {68, 548, 1748, 10000}) {
        const Axes axes{from, from + span, 30, 8000, columns, 400};
        for (const auto& ticks :
             {secondTicks(axes), barTicks(axes, {127.6, 0.37}), barTicks(axes, {31, 90})}) {
          double end = -100, before = -100;
          for (const Tick& tick : ticks) {
            const double x = axes.x(tick.seconds);
            EXPECT_TRUE(x > -0.01 && x < columns) << x;
            EXPECT_GT(x, before + 6.9);
            before = x;
            if (tick.label.empty()) continue;
            EXPECT_GE(x, end + 6) << from << "+" << span << " in " << columns << ": " << tick.label;
            end = x + 3 + font::textWidth(tick.label);
          }
        }
      }
  const Axes eight{0, 8, 30, 8000, 548, 400};
  std::vector<std::string> labels;
  for (const Tick& tick : barTicks(eight, {120, 0.5}))
    if (!tick.label.empty()) labels.push_back(tick.label);
  EXPECT_EQ(labels, (std::vector<std::string>{"1", "2", "3", "4"}));
  EXPECT_TRUE(barTicks(eight, {1e300, 0}).empty());
}

TEST(Pictures, HeaderAndLabelsAreWrittenInFull) {
  const Audio audio = sounding(3, [](double t) { return sine(440, t); });
  PictureSettings settings;
  settings.fromS = 0.5;
  settings.toS = 2.75;
  settings.fminHz = 41.2;
  const auto reads = [](const Picture& picture, int x, int y, const std::string& text) {
    Canvas expected(picture.canvas.width(), picture.canvas.height(), {});
    expected.text(x, y, text, {255, 255, 255});
    for (int dy = 0; dy < font::height; dy++)
      for (int dx = 0; dx < font::textWidth(text); dx++) {
        const bool drawn = brightness(picture.canvas.at(x + dx, y + dy)) > 300;
        if (drawn != (expected.at(x + dx, y + dy).red > 0)) return false;
      }
    return true;
  };
  const Picture seconds = one(audio, settings, {"Reference"});
  EXPECT_TRUE(reads(seconds, 44, 4, "0.50-2.75 S  41-8000 HZ  80 DB  SECONDS ON TOP"));
  EXPECT_TRUE(reads(seconds, 44, 18, "REFERENCE"));
  settings.bars = BarLines{120, 0};
  EXPECT_TRUE(reads(one(audio, settings), 44, 4, "0.50-2.75 S  41-8000 HZ  80 DB  BAR NUMBERS ON TOP"));
}

TEST(Pictures, TextIsCutOffAtEveryEdge) {
  const Colour ink{255, 255, 255};
  const Rect within{10, 4, 21, 9};
  for (int x : {-200, -3, 8, 28, 36, 300})
    for (int y : {-9, 1, 9, 15, 400}) {
      Canvas canvas(40, 16, {});
      canvas.text(x, y, "A#9%(", ink, within);
      for (int py = 0; py < 16; py++)
        for (int px = 0; px < 40; px++) {
          const bool inside = px >= 10 && px < 31 && py >= 4 && py < 13;
          EXPECT_TRUE(inside || canvas.at(px, py) == Colour{}) << x << "," << y;
        }
      canvas.fill({x, y, 50, 50}, ink);
      canvas.text(x, y, "WIDER THAN ALL OF IT", ink);
    }
  // Every sign that pictures use has a shape of its own.
  const std::string signs = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 .-:#/%+,()";
  for (std::size_t a = 0; a < signs.size(); a++) {
    EXPECT_FALSE(std::ranges::equal(font::glyph(signs[a]), font::glyph('\x01'))) << signs[a];
    for (std::size_t b = 0; b < a; b++)
      EXPECT_FALSE(std::ranges::equal(font::glyph(signs[a]), font::glyph(signs[b]))) << signs[a] << signs[b];
  }
}

TEST(Pictures, FilesHaveTheSizeThatTheirSpanAsksFor) {
  TempFolder folder;
  const Audio audio = sounding(30, [](double t) { return 0.1 * sine(300, t); });
  const Audio* const both[] = {&audio, &audio};
  const struct {
    double to;
    int width, panels;
    unsigned expected;
  } cases[] = {{1, 0, 1, 600}, {10, 0, 1, 800}, {0, 0, 1, 1800}, {2, 333, 2, 333}, {2, 5, 1, 120}};
  for (const auto& c : cases) {
    PictureSettings settings;
    settings.toS = c.to;
    settings.width = c.width;
    const std::string labels[] = {"REFERENCE", "RENDER"};
    spectrogramImage(folder / "a.png", std::span(both).first(std::size_t(c.panels)),
                     std::span(labels).first(std::size_t(c.panels)), settings);
    const auto pixels = test::PngReader::read(test::readAll(folder / "a.png"));
    EXPECT_EQ(pixels.width, c.expected);
    EXPECT_EQ(pixels.height, unsigned(24 + 18 + 484 * c.panels + 18 * (c.panels - 1) + 8));
  }
  PictureSettings narrow;
  narrow.toS = 1;
  narrow.fminHz = 200;
  narrow.fmaxHz = 210;
  EXPECT_EQ(one(audio, narrow).plots[0].height, 120);
  narrow.fminHz = -1;
  narrow.fmaxHz = 1e6;
  EXPECT_EQ(one(audio, narrow).plots[0].height, 674);  // 10 to 24000 Hz
}

TEST(Pictures, SilenceIsDarkAndWhatCannotBeDrawnSaysWhy) {
  const Audio silence = sounding(1, [](double) { return 0; });
  const Picture dark = one(silence, {});
  EXPECT_EQ(dark.canvas.at(dark.plots[0].x + 5, dark.plots[0].y + 5), levelColour(0));

  const auto draw = [&](PictureSettings settings) { return errorOf([&] { one(silence, settings); }); };
  EXPECT_EQ(errorOf([] { drawSpectrogram({}, {}, {}); }), "Nothing to draw");
  EXPECT_EQ(errorOf([] { one(Audio{}, {}); }), "Nothing to draw");
  EXPECT_EQ(draw({.fminHz = 500, .fmaxHz = 400}), "--fmax must be above --fmin");
  EXPECT_EQ(draw({.fminHz = 500, .fmaxHz = 500}), "--fmax must be above --fmin");
  EXPECT_EQ(draw({.fminHz = 1, .fmaxHz = 2}), "--fmax must be above --fmin");
  EXPECT_EQ(draw({.fromS = 0.5, .toS = 0.549}), "The time span is shorter than 50 ms");
  EXPECT_EQ(draw({.fromS = 0.96}), "The time span is shorter than 50 ms");
  EXPECT_EQ(draw({.fromS = 5, .toS = 8}), "The time span is shorter than 50 ms");
  EXPECT_EQ(draw({.fromS = 0.5, .toS = 0.55}), "");

  TempFolder folder;
  const std::string path = folder / "none/a.png";
  EXPECT_EQ(errorOf([&] { differenceImage(path, silence, silence, {}); }), "Cannot write " + path);
}

}  // namespace
}  // namespace synth::analysis
