// Opens reports in a headless browser as a reader would: node check.mjs DIRECTORY REPORT.html...
// Sorting, zoom and read-out are exercised, axe-core looks for barriers in light and dark, and pictures and a PDF of
// each report go to DIRECTORY.
import { createRequire } from "node:module";
import { basename, join, resolve } from "node:path";
import { pathToFileURL } from "node:url";

const require = createRequire(join(process.env.NODE_MODULES_DIR, "package.json"));
const { chromium } = require("playwright-core");
const axe = require.resolve("axe-core/axe.min.js");

const [directory, ...reports] = process.argv.slice(2);
let failures = 0;
const check = (good, text) => {
  if (good) return;
  failures += 1;
  console.error(`FAILED: ${text}`);
};

const numbers = (page, column) => page.$$eval("table.summary tbody tr", (rows, index) =>
  rows.map(row => row.cells[index].dataset.value).filter(value => value !== undefined).map(Number), column);

async function sorts(page, name) {
  const heads = await page.$$eval("table.summary thead th", cells => cells.map(cell => cell.textContent.trim()));
  const column = heads.indexOf("Measured");
  if (column < 0) return;
  const button = page.locator("table.summary thead th").nth(column).locator("button");
  for (const sign of [1, -1]) {
    await button.click();
    const found = await numbers(page, column);
    check(found.every((value, i) => i === 0 || sign * (value - found[i - 1]) >= 0), `${name}: sorted by Measured: ${found}`);
  }
  const sorted = await page.locator("th[aria-sort=descending]").count();
  check(sorted === 1, `${name}: one column says that it is sorted, found ${sorted}`);
}

async function zooms(page, name) {
  for (const figure of await page.locator("figure.zoomable").all()) {
    await figure.scrollIntoViewIfNeeded();
    const svg = figure.locator("svg");
    const width = async () => Number((await svg.getAttribute("viewBox")).split(" ")[2]);
    const whole = await width();
    await figure.locator(".zoom-in").click();
    await figure.locator(".zoom-in").click();
    check(Math.abs(await width() - whole / 2.56) < 1e-6, `${name}: zoom shows ${await width()} of ${whole}`);
    const box = await svg.boundingBox();
    const before = await svg.getAttribute("viewBox");
    await page.mouse.move(box.x + box.width / 2, box.y + box.height / 2);
    await page.mouse.down();
    await page.mouse.move(box.x + box.width / 2 - 40, box.y + box.height / 2 - 20);
    await page.mouse.up();
    check(await svg.getAttribute("viewBox") !== before, `${name}: dragging moves the picture`);
    await figure.locator(".zoom-all").click();
    check(await width() === whole, `${name}: the whole picture comes back`);
    // The point that the pointer stands on is the one that is told.
    const points = await figure.locator(".read-out").evaluate(list => JSON.parse(list.dataset.points));
    check(points.length > 0, `${name}: a picture tells of no points`);
    const [x, y, place, deviation] = points[Math.floor(points.length / 2)];
    const at = await svg.evaluate((element, [px, py]) => {
      const screen = new DOMPoint(px, py).matrixTransform(element.getScreenCTM());
      return [screen.x, screen.y];
    }, [x, y]);
    await page.mouse.move(at[0], at[1]);
    const told = await figure.locator("output").textContent();
    check(told.includes(" at (") === (points[0].length > 4) && points.some(p => Math.hypot(p[0] - x, p[1] - y) < 0.2 && told.startsWith(`${p[2]}: ${p[3]}`)),
      `${name}: at ${place} with ${deviation} it tells '${told}'`);
    await figure.locator(".point-after").focus();
    await page.keyboard.press("Enter");
    check(await figure.locator("output").textContent() !== told, `${name}: the keyboard steps to the next point`);
  }
}

async function isAccessible(page, name) {
  await page.addScriptTag({ path: axe });
  const found = await page.evaluate(() => window.axe.run());
  for (const violation of found.violations) {
    check(false, `${name}: ${violation.id}: ${violation.help}: ${violation.nodes.slice(0, 3).map(node => node.html.slice(0, 120)).join(" | ")}`);
  }
}

const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
  args: ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync"],
});
for (const report of reports) {
  const name = basename(report, ".html");
  for (const colorScheme of ["light", "dark"]) {
    const context = await browser.newContext({ colorScheme, viewport: { width: 1200, height: 2400 }, bypassCSP: true });
    const page = await context.newPage();
    page.on("pageerror", error => check(false, `${name}: ${error}`));
    page.on("request", request => check(request.url().startsWith("file:"), `${name}: asks the network for ${request.url()}`));
    await page.goto(pathToFileURL(resolve(report)).href);
    await page.screenshot({ path: join(directory, `${name}-${colorScheme}.png`) });
    await isAccessible(page, `${name}, ${colorScheme}`);
    if (colorScheme === "light") {
      await sorts(page, name);
      await zooms(page, name);
      await page.setViewportSize({ width: 400, height: 800 });
      const wide = await page.evaluate(() => document.documentElement.scrollWidth);
      check(wide <= 400, `${name}: ${wide} pixels wide on a screen of 400`);
      await page.screenshot({ path: join(directory, `${name}-narrow.png`) });
      await page.pdf({ path: join(directory, `${name}.pdf`), preferCSSPageSize: true });
    }
    await context.close();
  }
  console.log(`${name}: looked at`);
}
await browser.close();
process.exit(failures === 0 ? 0 : 1);
