// Compares what the formats of one report say: node numbers.mjs SCHEMA REPORT..., each REPORT naming files that end in
// .json, .html, .csv and .qif; those that are missing are passed over. JSON is the yardstick, and follows SCHEMA.
import { createRequire } from "node:module";
import { existsSync, readFileSync } from "node:fs";
import { join } from "node:path";

const require = createRequire(join(process.env.NODE_MODULES_DIR, "package.json"));
const Ajv = require("ajv/dist/2020").default;

const [schema, ...reports] = process.argv.slice(2);
const validate = new Ajv({ allErrors: true, strict: true, allowUnionTypes: true, strictRequired: false, strictTypes: false })
  .compile(JSON.parse(readFileSync(schema)));
let failures = 0;
let compared = 0;
const same = (found, expected, text) => {
  compared += 1;
  if (Object.is(found, expected)) return;
  failures += 1;
  console.error(`FAILED: ${text}: ${found}, expected ${expected}`);
};
const valueOf = text => text === "" || text === undefined ? null : Number(text);

function fieldsOf(line) {
  return [...line.matchAll(/("(?:[^"]|"")*"|[^,]*)(?:,|$)/g)].map(match => match[1].replace(/^"|"$/g, "").replace(/""/g, "\""));
}

function checkCsv(text, characteristics, name) {
  const lines = text.split("\r\n").filter(line => line !== "");
  const heads = fieldsOf(lines[0]).filter(head => head !== "");
  same(lines.length - 1, characteristics.length, `${name}.csv: rows`);
  lines.slice(1).forEach((line, i) => {
    const fields = fieldsOf(line);
    const field = head => fields[heads.indexOf(head)];
    same(field("characteristic"), characteristics[i].name, `${name}.csv: name`);
    for (const key of ["nominal", "lower", "upper", "measured", "deviation", "uncertainty"]) {
      same(valueOf(field(key)), characteristics[i][key], `${name}.csv: ${key} of ${characteristics[i].name}`);
    }
  });
}

function checkHtml(text, characteristics, name) {
  const table = text.match(/<table class="sortable summary">[^]*?<\/table>/)?.[0] ?? "";
  const heads = [...table.matchAll(/<th scope="col"[^>]*>([^<]*)<\/th>/g)].map(match => match[1]);
  const rows = [...table.matchAll(/<tr>(<th scope="row"[^]*?)<\/tr>/g)].map(match => match[1]);
  same(rows.length, characteristics.length, `${name}.html: rows`);
  rows.forEach((row, i) => {
    const cells = [...row.matchAll(/<t[hd]([^>]*)>([^]*?)<\/t[hd]>/g)];
    for (const head of ["Nominal", "Lower", "Upper", "Measured", "Deviation", "Uncertainty"]) {
      const cell = cells[heads.indexOf(head)];
      const full = cell?.[1].match(/data-value="([^"]*)"/)?.[1];
      const expected = characteristics[i][head.toLowerCase()];
      same(valueOf(full), expected, `${name}.html: ${head} of ${characteristics[i].name}`);
      if (expected === null) continue;
      // What is shown is the full value, rounded.
      const shown = cell[2].replace("\u2212", "-");
      const decimals = shown.split(".")[1]?.length ?? 0;
      same(Math.abs(Number(shown) - expected) <= 0.5000001 * 10 ** -decimals, true, `${name}.html: ${head} shows ${shown} for ${expected}`);
    }
  });
}

function checkQif(text, characteristics, name) {
  const ids = [...text.matchAll(/ id="(\d+)"/g)].map(match => match[1]);
  same(new Set(ids).size, ids.length, `${name}.qif: identifiers are used once`);
  same(Math.max(...ids.map(Number)), Number(text.match(/idMax="(\d+)"/)[1]), `${name}.qif: idMax`);
  for (const [, reference] of text.matchAll(/<(?:\w+Id|Id)>(\d+)</g)) same(ids.includes(reference), true, `${name}.qif: refers to ${reference}`);
  for (const [, count, inside] of text.matchAll(/<FeatureItemIds n="(\d+)">([^]*?)<\/FeatureItemIds>/g)) {
    same(inside.match(/<Id>/g).length, Number(count), `${name}.qif: number of features`);
  }
  const measurements = [...text.matchAll(/<\w+CharacteristicMeasurement id="\d+">([^]*?)<\/\w+CharacteristicMeasurement>/g)];
  same(measurements.length, characteristics.length, `${name}.qif: measurements`);
  measurements.forEach(([, inside], i) => {
    same(valueOf(inside.match(/<Value[^>]*>([^<]*)</)?.[1]), characteristics[i].measured, `${name}.qif: ${characteristics[i].name}`);
  });
}

for (const name of reports) {
  const document = JSON.parse(readFileSync(`${name}.json`, "utf8"));
  if (!validate(document)) {
    failures += 1;
    console.error(`FAILED: ${name}.json does not follow the schema: ${JSON.stringify(validate.errors.slice(0, 4), null, 1)}`);
  }
  const characteristics = (document.parts ?? []).flatMap(part => part.characteristics);
  for (const [ending, check] of [["csv", checkCsv], ["html", checkHtml], ["qif", checkQif]]) {
    if (existsSync(`${name}.${ending}`)) check(readFileSync(`${name}.${ending}`, "utf8"), characteristics, name);
  }
}
console.log(`${compared} values compared, ${failures} failures`);
process.exit(failures === 0 ? 0 : 1);
