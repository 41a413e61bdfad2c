// A worker that draws charts, each on the canvas that it was handed.

import './chart.min.js';  // Chart.js as it is packaged: a script, which leaves its class in the global object.

const charts = new Map();

function begin(canvas, type) {
  return new globalThis.Chart(canvas, {
    type,
    data: { labels: [], datasets: [{ data: [], borderWidth: 1.5, pointRadius: 0, barPercentage: 1, categoryPercentage: 1 }] },
    options: {
      animation: false,
      responsive: false,
      maintainAspectRatio: false,
      plugins: { legend: { display: false } },
      scales: {
        x: { grid: { display: false }, ticks: { maxRotation: 0, autoSkipPadding: 12 } },
        y: { beginAtZero: true, ticks: { maxTicksLimit: 4, precision: 0 } },
      },
    },
  });
}

function show(chart, { labels, values, width, height, ratio, accent, faint, line }) {
  const { data, options } = chart;
  data.labels = labels;
  Object.assign(data.datasets[0], { data: values, borderColor: accent, backgroundColor: accent });
  for (const axis of Object.values(options.scales)) {
    axis.ticks.color = faint;
    axis.grid.color = line;
  }
  options.devicePixelRatio = ratio;
  chart.resize(width, height);
  chart.update('none');
}

addEventListener('message', ({ data }) => {
  if (data.canvas) charts.set(data.number, begin(data.canvas, data.type));
  else show(charts.get(data.number), data);
});
