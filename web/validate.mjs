// Checks files by the official glTF validator: no error and no warning may be found.
//   node validate.mjs FILE...
import fs from 'node:fs';
import { validateBytes } from 'gltf-validator';

let faults = 0;
for (const path of process.argv.slice(2)) {
  const report = await validateBytes(new Uint8Array(fs.readFileSync(path)), { maxIssues: 20 });
  const { numErrors, numWarnings, messages } = report.issues;
  faults += numErrors + numWarnings;
  console.log(`${path}: ${numErrors} errors, ${numWarnings} warnings`);
  for (const { severity, code, message, pointer } of messages)
    if (severity < 2) console.log(`  ${code} ${pointer}: ${message}`);
}
process.exit(faults > 0 || process.argv.length < 3 ? 1 : 0);
