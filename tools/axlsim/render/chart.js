// SPDX-License-Identifier: MIT
// Waveforms of a run's pins, channels and events, built from its timeline objects (those of
// `axlsim run --json`). The live page draws the last seconds; the report the whole run.
class AxlChart {
  constructor(canvas, bus) {
    this.canvas = canvas;
    this.bus = bus;
    this.signals = new Map();
    this.markers = [];
    this.end = 0;
    bus.forEach((type, i) => {
      const p = i + 1;
      const digital = type === 'AXL_F_DI8_1_DO8_1';
      for (const kind of digital ? ['DI', 'DO'] : ['AI', 'AO'])
        for (let n = 0; n < (digital ? 8 : 2); ++n) {
          const s = this.signal(`${p}.${kind}${n}`, digital ? 'digital' : 'analog');
          // Inputs start at 0; outputs show from the first bus write.
          if (kind === 'DI' || kind === 'AI') s.points.push([0, 0]);
        }
    });
  }

  signal(name, kind) {
    if (!this.signals.has(name)) this.signals.set(name, { name, kind, points: [] });
    return this.signals.get(name);
  }

  set(name, kind, t, value) {
    const s = this.signal(name, kind);
    const last = s.points[s.points.length - 1];
    if (kind !== 'event' && last && last[1] === value) return;
    s.points.push([t, value]);
  }

  static bytes(hex) {
    const out = [];
    for (let i = 0; i + 1 < hex.length; i += 2) out.push(parseInt(hex.substr(i, 2), 16));
    return out;
  }

  // A payload as the driver reads it: one byte, or the native (little-endian) float.
  static payload(hex) {
    const b = AxlChart.bytes(hex || '');
    if (b.length === 1) return b[0];
    if (b.length >= 4) return new DataView(new Uint8Array(b.slice(0, 4)).buffer).getFloat32(0, true);
    return hex;
  }

  feed(o) {
    const t = o.t_ms;
    const driver = o.driver === undefined || o.driver === null ? '' : `${o.driver}:`;
    switch (o.kind) {
      case 'input': {
        const digital = this.bus[o.module - 1] === 'AXL_F_DI8_1_DO8_1';
        this.set(`${o.module}.${digital ? 'DI' : 'AI'}${o.pin}`, digital ? 'digital' : 'analog', t,
                 digital ? o.value : o.raw);
        break;
      }
      case 'plant':
        this.set(o.to, o.value !== undefined ? 'digital' : 'analog', t,
                 o.value !== undefined ? o.value : o.raw);
        break;
      case 'bus_write':
        for (const [position, hex] of Object.entries(o.outputs)) {
          const b = AxlChart.bytes(hex);
          if (this.bus[position - 1] === 'AXL_F_DI8_1_DO8_1') {
            for (let n = 0; n < 8; ++n) this.set(`${position}.DO${n}`, 'digital', t, (b[0] >> n) & 1);
          } else {
            for (let c = 0; c < 2 && 2 * c + 1 < b.length; ++c)
              this.set(`${position}.AO${c}`, 'analog', t, (b[2 * c] << 8) | b[2 * c + 1]);
          }
        }
        break;
      case 'publish':
        this.set(`${driver}published ${o.id}`, 'event', t, o.value !== undefined ? o.value : o.bytes);
        break;
      case 'event':
        this.set(`${driver}received ${o.id}`, 'event', t, o.null ? 'null' : AxlChart.payload(o.bytes));
        break;
      case 'stop': case 'restart': case 'exception':
        this.markers.push({ t, kind: o.kind });
        break;
    }
    if (t > this.end) this.end = t;
  }

  // Drops what lies before `t`, keeping each signal's value at `t`.
  trim(t) {
    for (const s of this.signals.values()) {
      let i = 0;
      while (i + 1 < s.points.length && s.points[i + 1][0] <= t) ++i;
      if (s.kind === 'event') while (i < s.points.length && s.points[i][0] < t) ++i;
      if (i > 0) s.points.splice(0, i);
    }
    this.markers = this.markers.filter(m => m.t >= t);
  }

  names() { return [...this.signals.keys()]; }

  static label(v) {
    return typeof v === 'number' && !Number.isInteger(v) ? v.toPrecision(4) : String(v);
  }

  draw(t0, t1) {
    const rowHeight = { digital: 18, analog: 34, event: 22 };
    const signals = [...this.signals.values()];
    const labelWidth = 150;
    const ratio = window.devicePixelRatio || 1;
    const width = this.canvas.clientWidth || 800;
    const height = signals.reduce((h, s) => h + rowHeight[s.kind] + 4, 20);
    this.canvas.width = width * ratio;
    this.canvas.height = height * ratio;
    this.canvas.style.height = `${height}px`;
    this.canvas.dataset.signals = this.names().join('|');
    const g = this.canvas.getContext('2d');
    g.setTransform(ratio, 0, 0, ratio, 0, 0);
    g.clearRect(0, 0, width, height);
    g.font = '11px system-ui, sans-serif';
    const span = Math.max(t1 - t0, 1e-6);
    const x = t => labelWidth + (t - t0) / span * (width - labelWidth - 8);
    let y = 4;
    for (const s of signals) {
      const h = rowHeight[s.kind];
      g.fillStyle = '#1d2330';
      g.fillText(s.name, 4, y + h / 2 + 4);
      g.strokeStyle = '#eef0f3';
      g.beginPath(); g.moveTo(labelWidth, y + h + 2); g.lineTo(width, y + h + 2); g.stroke();
      const pts = s.points;
      if (s.kind === 'event') {
        g.strokeStyle = '#7c3aed'; g.fillStyle = '#7c3aed';
        for (const [t, v] of pts) {
          if (t < t0 || t > t1) continue;
          g.beginPath(); g.moveTo(x(t), y + h); g.lineTo(x(t), y + 4); g.stroke();
          // A label that would run past the right edge goes on the left of its mark.
          const text = AxlChart.label(v);
          const w = g.measureText(text).width;
          g.fillText(text, x(t) + 2 + w > width - 2 ? x(t) - 2 - w : x(t) + 2, y + 11);
        }
      } else if (pts.length) {
        const numbers = pts.map(p => p[1]);
        const lo = s.kind === 'digital' ? 0 : Math.min(...numbers);
        const hi = s.kind === 'digital' ? 1 : Math.max(...numbers);
        const yOf = v => y + h - 2 - (hi > lo ? (v - lo) / (hi - lo) : 0.5) * (h - 4);
        g.strokeStyle = s.kind === 'digital' ? '#16a34a' : '#2563eb';
        g.beginPath();
        let started = false;
        let prev = null;
        for (let i = 0; i < pts.length; ++i) {
          const [t, v] = pts[i];
          const next = i + 1 < pts.length ? pts[i + 1][0] : Math.max(t1, this.end);
          if (next < t0 || t > t1) { prev = v; continue; }
          const a = x(Math.max(t, t0)), b = x(Math.min(next, t1));
          // A digital signal that is on is shaded, so that on and off read at a glance.
          if (s.kind === 'digital' && v === 1) {
            g.fillStyle = 'rgba(22, 163, 74, 0.15)';
            g.fillRect(a, yOf(1), b - a, yOf(0) - yOf(1));
          }
          if (!started) { g.moveTo(a, yOf(v)); started = true; } else { g.lineTo(a, yOf(prev)); g.lineTo(a, yOf(v)); }
          g.lineTo(b, yOf(v));
          prev = v;
        }
        g.stroke();
        if (s.kind === 'analog') {
          g.fillStyle = '#6b7280';
          g.fillText(`${AxlChart.label(lo)}..${AxlChart.label(hi)}`, labelWidth - 60, y + h - 2);
        }
      }
      y += h + 4;
    }
    const colours = { stop: '#dc2626', restart: '#ea580c', exception: '#9333ea' };
    for (const m of this.markers) {
      if (m.t < t0 || m.t > t1) continue;
      g.strokeStyle = colours[m.kind]; g.fillStyle = colours[m.kind];
      g.beginPath(); g.moveTo(x(m.t), 0); g.lineTo(x(m.t), height); g.stroke();
      g.fillText(m.kind, x(m.t) + 3, height - 4);
    }
    g.fillStyle = '#6b7280';
    g.fillText(`${AxlChart.label(t0)} ms`, labelWidth, height - 4);
    const endText = `${AxlChart.label(t1)} ms`;
    g.fillText(endText, width - 8 - g.measureText(endText).width, height - 4);
  }
}
