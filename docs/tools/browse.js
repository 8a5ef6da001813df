// browse.js HTML SCREENSHOTS BROWSER [PAGE...]: opens pages of the manual as a reader would; exit code 1 on any fault.
'use strict';
const fs = require('fs');
const os = require('os');
const path = require('path');
const {chromium} = require('playwright-core');
const axe = fs.readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');

const [html, screenshots, browserPath, ...given] = process.argv.slice(2);
const pages = given.length ? given : ['index', 'concepts', 'fits/circle', 'causes', 'generated/reference/curves-circle'];
const looks = [
  {name: 'desktop-light', width: 1280, height: 900, colorScheme: 'light'},
  {name: 'desktop-dark', width: 1280, height: 900, colorScheme: 'dark'},
  {name: 'phone-light', width: 390, height: 844, colorScheme: 'light'},
  {name: 'phone-dark', width: 390, height: 844, colorScheme: 'dark'},
];
const faults = [];
let measured = 0;
const urlOf = (page) => 'file://' + path.resolve(html, page + '.html');

// Fails on requests to anywhere but the disk, errors of scripts, and files that are missing.
function watch(page, title) {
  page.on('request', (request) => {
    if (!/^(file|data|blob):/.test(request.url())) faults.push(`${title} asks for ${request.url()}`);
  });
  page.on('requestfailed', (request) => faults.push(`${title}: cannot load ${request.url()}`));
  page.on('pageerror', (error) => faults.push(`${title}: ${error.message}`));
}

async function look(context, name, look) {
  const title = `${name}, ${look.name}`;
  const page = await context.newPage();
  watch(page, title);
  await page.goto(urlOf(name));
  const isTooWide = await page.evaluate(() => document.documentElement.scrollWidth > window.innerWidth + 1);
  if (isTooWide) faults.push(`${title}: wider than the window`);
  const file = `${name.replace(/\W+/g, '-')}-${look.name}.png`;
  await page.screenshot({path: path.join(screenshots, file), animations: 'disabled', caret: 'hide'});
  await page.evaluate(axe);
  const {violations, passes} = await page.evaluate(() => axe.run({runOnly: ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa']}));
  if (passes.length < 5) faults.push(`${title}: only ${passes.length} rules applied`);
  for (const violation of violations) {
    const places = violation.nodes.slice(0, 3).map((node) => node.target.join(' ')).join('; ');
    faults.push(`${title}: ${violation.id} (${violation.nodes.length}): ${violation.help}: ${places}`);
  }
  await page.close();
}

// All pages but those of the reference, which are of one kind: none is wider than a phone.
async function measure(page) {
  const names = fs.readdirSync(html, {recursive: true}).filter((name) => /^[^_].*\.html$/.test(name) && !/generated.reference./.test(name));
  await page.setViewportSize({width: 390, height: 844});
  for (const name of names) {
    await page.goto(urlOf(name.slice(0, -5)));
    const width = await page.evaluate(() => document.documentElement.scrollWidth);
    if (width > 390) faults.push(`${name}: ${width} wide on a phone`);
  }
  return names.length;
}

async function search(context) {
  const page = await context.newPage();
  watch(page, 'search');
  await page.goto(urlOf('search') + '?q=roundness');
  await page.waitForSelector('#search-results ul.search li a', {timeout: 20000}).catch(() => faults.push('search finds nothing'));
  await page.close();
}

(async () => {
  fs.mkdirSync(screenshots, {recursive: true});
  const profile = fs.mkdtempSync(path.join(os.tmpdir(), 'nu-docs-'));
  const browser = await chromium.launchPersistentContext(profile, {
    executablePath: browserPath,
    headless: true,
    args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
      '--disable-component-update', '--disable-sync', '--allow-file-access-from-files'],
  });
  try {
    for (const one of looks) {
      const page = browser.pages()[0];
      await page.setViewportSize({width: one.width, height: one.height});
      for (const name of pages) {
        const context = {
          newPage: async () => {
            const opened = await browser.newPage();
            await opened.setViewportSize({width: one.width, height: one.height});
            await opened.emulateMedia({colorScheme: one.colorScheme});
            return opened;
          },
        };
        await look(context, name, one);
      }
    }
    await search(browser);
    measured = await measure(browser.pages()[0]);
  } finally {
    await browser.close();
    fs.rmSync(profile, {recursive: true, force: true});
  }
  for (const fault of faults) console.error(fault);
  console.log(`${pages.length} pages in ${looks.length} looks, ${measured} on a phone, ${faults.length} faults; pictures in ${screenshots}`);
  process.exit(faults.length ? 1 : 0);
})();
