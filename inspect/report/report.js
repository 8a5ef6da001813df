"use strict";

// Tables: a click on the head of a column sorts by it, a second one the other way round.
for (const table of document.querySelectorAll("table.sortable")) {
  const heads = [...table.tHead.rows[0].cells];
  const key = (row, column) => {
    const cell = row.cells[column];
    const value = cell.dataset.value ?? cell.textContent.trim();
    const number = value === "" ? NaN : Number(value);
    return { value, number };
  };
  // Numbers before words, empty cells last in either direction.
  const compare = (a, b, sign) => {
    if (a.value === "" || b.value === "") return (a.value === "") - (b.value === "");
    const numbers = !Number.isNaN(a.number) - !Number.isNaN(b.number);
    if (numbers !== 0) return -numbers;
    if (!Number.isNaN(a.number)) return sign * (a.number - b.number);
    return sign * a.value.localeCompare(b.value, undefined, { numeric: true });
  };
  heads.forEach((head, column) => {
    const button = document.createElement("button");
    button.append(...head.childNodes);
    head.append(button);
    button.addEventListener("click", () => {
      const sign = head.getAttribute("aria-sort") === "ascending" ? -1 : 1;
      heads.forEach(other => other.removeAttribute("aria-sort"));
      head.setAttribute("aria-sort", sign > 0 ? "ascending" : "descending");
      const body = table.tBodies[0];
      const rows = [...body.rows].map(row => ({ row, key: key(row, column) }));
      rows.sort((a, b) => compare(a.key, b.key, sign));
      body.append(...rows.map(each => each.row));
    });
  });
}

// Pictures: zoom, pan, and what is known about the point under the pointer.
for (const figure of document.querySelectorAll("figure.zoomable")) {
  const frame = figure.querySelector(".picture");
  const svg = frame.querySelector("svg");
  const output = figure.querySelector("output");
  const whole = svg.getAttribute("viewBox").split(" ").map(Number);
  const list = svg.querySelector(".read-out");
  const points = list ? JSON.parse(list.dataset.points) : [];
  let view = [...whole];
  let chosen = -1;
  let drag = null;

  const mark = document.createElementNS("http://www.w3.org/2000/svg", "circle");
  mark.setAttribute("r", "2");
  mark.setAttribute("fill", "none");
  mark.setAttribute("stroke", "#d9480f");
  mark.setAttribute("stroke-width", "0.7");
  mark.setAttribute("visibility", "hidden");
  mark.setAttribute("class", "mark");
  svg.append(mark);

  const show = () => {
    const limit = (start, size, whole0, whole1) => Math.min(Math.max(start, whole0), whole0 + whole1 - size);
    view[0] = limit(view[0], view[2], whole[0], whole[2]);
    view[1] = limit(view[1], view[3], whole[1], whole[3]);
    svg.setAttribute("viewBox", view.join(" "));
    frame.classList.toggle("zoomed", view[2] < whole[2]);
    const scale = view[2] / whole[2];
    mark.setAttribute("r", 2 * scale);
    mark.setAttribute("stroke-width", 0.7 * scale);
  };
  const zoom = (factor, at = [view[0] + view[2] / 2, view[1] + view[3] / 2]) => {
    const size = Math.min(Math.max(view[2] / factor, whole[2] / 64), whole[2]);
    const ratio = size / view[2];
    view = [at[0] - (at[0] - view[0]) * ratio, at[1] - (at[1] - view[1]) * ratio, size, view[3] * ratio];
    show();
  };
  const whereIs = event => {
    const place = new DOMPoint(event.clientX, event.clientY).matrixTransform(svg.getScreenCTM().inverse());
    return [place.x, place.y];
  };
  const choose = index => {
    chosen = index;
    mark.setAttribute("visibility", index < 0 ? "hidden" : "visible");
    if (index < 0) { output.textContent = ""; return; }
    const [x, y, place, deviation, coordinates] = points[index];
    mark.setAttribute("cx", x);
    mark.setAttribute("cy", y);
    output.textContent = `${place}: ${deviation}` + (coordinates === undefined ? "" : ` at (${coordinates})`);
  };
  const nearest = (x, y) => {
    let best = -1;
    let least = (8 * view[2] / whole[2]) ** 2;
    points.forEach(([px, py], index) => {
      const distance = (px - x) ** 2 + (py - y) ** 2;
      if (distance < least) { least = distance; best = index; }
    });
    return best;
  };
  const step = by => {
    if (points.length === 0) return;
    choose((chosen + by + points.length) % points.length);
    const [x, y] = points[chosen];
    const outside = x < view[0] || x > view[0] + view[2] || y < view[1] || y > view[1] + view[3];
    if (outside) { view[0] = x - view[2] / 2; view[1] = y - view[3] / 2; show(); }
  };

  figure.querySelector(".zoom-in").addEventListener("click", () => zoom(1.6));
  figure.querySelector(".zoom-out").addEventListener("click", () => zoom(1 / 1.6));
  figure.querySelector(".zoom-all").addEventListener("click", () => { view = [...whole]; show(); });
  figure.querySelector(".point-before").addEventListener("click", () => step(-1));
  figure.querySelector(".point-after").addEventListener("click", () => step(1));
  svg.addEventListener("dblclick", event => { event.preventDefault(); zoom(2, whereIs(event)); });
  // A plain turn of the wheel scrolls the page.
  svg.addEventListener("wheel", event => {
    if (!event.ctrlKey && !event.metaKey) return;
    event.preventDefault();
    zoom(event.deltaY < 0 ? 1.25 : 0.8, whereIs(event));
  }, { passive: false });
  svg.addEventListener("pointerdown", event => {
    if (view[2] >= whole[2]) return;
    drag = whereIs(event);
    svg.setPointerCapture(event.pointerId);
  });
  svg.addEventListener("pointermove", event => {
    const [x, y] = whereIs(event);
    if (drag === null) { choose(nearest(x, y)); return; }
    view[0] += drag[0] - x;
    view[1] += drag[1] - y;
    show();
  });
  for (const end of ["pointerup", "pointercancel"]) svg.addEventListener(end, () => { drag = null; });
  // Paper shows the whole picture.
  window.addEventListener("beforeprint", () => { svg.setAttribute("viewBox", whole.join(" ")); });
  window.addEventListener("afterprint", show);
}
