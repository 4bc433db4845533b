"""A line chart of angles against one quantity as SVG, angles on a logarithmic scale."""

import math

WIDTH, HEIGHT = 640, 380
LEFT, RIGHT, TOP, BOTTOM = 72, 24, 76, 56
INK, FAINT, GRID = "#24292f", "#57606a", "#e4e7eb"
COLOURS = {"middle": "#1f5fa8", "upper": "#c8641a"}
# arc-seconds that may stand on the vertical scale
TICKS = [(0.1, "0.1″"), (0.2, "0.2″"), (0.5, "0.5″"), (1, "1″"), (2, "2″"), (5, "5″"), (10, "10″"), (20, "20″"),
         (60, "1′"), (120, "2′"), (300, "5′"), (600, "10′"), (1200, "20′"), (3600, "1°"), (7200, "2°"),
         (18000, "5°"), (36000, "10°"), (72000, "20°"), (180000, "50°"), (360000, "100°"), (720000, "200°")]


class Chart:
    """Add lines, then ask for the picture."""

    def __init__(self, title, across, up, logarithmic):
        self.title, self.across, self.up, self.logarithmic = title, across, up, logarithmic
        self.lines = []

    def line(self, label, colour, points):
        """Measured values: points on a full line."""
        self.lines.append((label, COLOURS[colour], points, False))

    def dashes(self, label, colour, points):
        """Calculated values: a broken line."""
        self.lines.append((label, COLOURS[colour], points, True))

    def svg(self):
        self._choose_scales()
        parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" width="{WIDTH}" '
                 f'height="{HEIGHT}" font-family="DejaVu Sans, Verdana, sans-serif" font-size="12" fill="{INK}">',
                 f"<title>{self.title}</title>",
                 f'<rect width="{WIDTH}" height="{HEIGHT}" rx="6" fill="#ffffff"/>',
                 f'<text x="{LEFT}" y="26" font-size="15" font-weight="bold">{self.title}</text>']
        parts += self._grid() + self._legend()
        for drawn in self.lines:
            parts += self._curve(*drawn)
        return "\n".join(parts + ["</svg>"]) + "\n"

    def _choose_scales(self):
        self.values = sorted({x for line in self.lines for x, _ in line[2]})
        heights = [y for line in self.lines for _, y in line[2]]
        low, high = min(heights) * 0.85, max(heights) * 1.15
        below = [tick for tick in TICKS if tick[0] <= low] or TICKS[:1]
        above = [tick for tick in TICKS if tick[0] >= high] or TICKS[-1:]
        self.ticks = [tick for tick in TICKS if below[-1][0] <= tick[0] <= above[0][0]]

    def _x(self, value):
        scale = math.log if self.logarithmic else float
        low, high = scale(self.values[0]), scale(self.values[-1])
        inside = 18  # so that the first and the last point stand clear of the frame
        return LEFT + inside + (scale(value) - low) / (high - low) * (WIDTH - LEFT - RIGHT - 2 * inside)

    def _y(self, seconds):
        low, high = math.log(self.ticks[0][0]), math.log(self.ticks[-1][0])
        share = (math.log(max(seconds, self.ticks[0][0])) - low) / (high - low)
        return HEIGHT - BOTTOM - share * (HEIGHT - BOTTOM - TOP)

    def _grid(self):
        right, floor = WIDTH - RIGHT, HEIGHT - BOTTOM
        parts = []
        for seconds, label in self.ticks:
            y = self._y(seconds)
            parts += [f'<line x1="{LEFT}" x2="{right}" y1="{y:.1f}" y2="{y:.1f}" stroke="{GRID}"/>',
                      f'<text x="{LEFT - 8}" y="{y + 4:.1f}" text-anchor="end" fill="{FAINT}">{label}</text>']
        last = -math.inf
        for value in self.values:
            x = self._x(value)
            parts.append(f'<line x1="{x:.1f}" x2="{x:.1f}" y1="{floor}" y2="{floor + 5}" stroke="{FAINT}"/>')
            if x - last > 30:
                shown = f"{value:g}".replace("-", "−")
                parts.append(f'<text x="{x:.1f}" y="{floor + 19}" text-anchor="middle" fill="{FAINT}">{shown}</text>')
                last = x
        middle = (TOP + floor) / 2
        return parts + [
            f'<line x1="{LEFT}" x2="{right}" y1="{floor}" y2="{floor}" stroke="{FAINT}"/>',
            f'<text x="{(LEFT + right) / 2:.0f}" y="{HEIGHT - 14}" text-anchor="middle">{self.across}</text>',
            f'<text transform="translate(18 {middle:.0f}) rotate(-90)" text-anchor="middle">{self.up}</text>']

    def _legend(self):
        parts, x = [], LEFT
        for label, colour, _, broken in self.lines:
            dashes = ' stroke-dasharray="5 4"' if broken else ""
            parts += [f'<line x1="{x}" x2="{x + 24}" y1="48" y2="48" stroke="{colour}" stroke-width="2"{dashes}/>',
                      f'<text x="{x + 30}" y="52" fill="{FAINT}">{label}</text>']
            if not broken:
                parts.append(f'<circle cx="{x + 12}" cy="48" r="3.5" fill="{colour}"/>')
            x += 50 + round(6.6 * len(label))
        return parts

    def _curve(self, _, colour, points, broken):
        path = " ".join(f"{self._x(x):.1f},{self._y(y):.1f}" for x, y in points)
        dashes = ' stroke-dasharray="5 4" opacity="0.75"' if broken else ""
        parts = [f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"{dashes}/>']
        if not broken:
            parts += [f'<circle cx="{self._x(x):.1f}" cy="{self._y(y):.1f}" r="3.5" fill="{colour}"/>'
                      for x, y in points]
        return parts
