// Validates each .gltf or .glb file named on the command line with the
// Khronos glTF validator (the npm package gltf-validator, found in the
// node_modules folder that OX_NODE_MODULES names) and prints one JSON line
// per file: {"file", "errors", "warnings", "infos", "hints", "codes":
// {CODE: {"severity", "count", "first"}}}. External resources (the .bin,
// pictures) are read relative to the file.
import { readFile } from 'node:fs/promises';
import { createRequire } from 'node:module';
import path from 'node:path';

const require = createRequire(path.join(process.env.OX_NODE_MODULES ?? 'node_modules', 'x.js'));
const validator = require('gltf-validator');

for (const file of process.argv.slice(2)) {
  const bytes = new Uint8Array(await readFile(file));
  const report = await validator.validateBytes(bytes, {
    uri: path.basename(file),
    maxIssues: 0,
    externalResourceFunction: (uri) =>
      readFile(path.resolve(path.dirname(file), decodeURIComponent(uri))).then(
        (data) => new Uint8Array(data)),
  });
  const codes = {};
  for (const message of report.issues.messages) {
    const entry = codes[message.code] ??= { severity: message.severity, count: 0, first: '' };
    if (entry.count++ === 0) entry.first = `${message.pointer ?? ''}: ${message.message}`;
  }
  console.log(JSON.stringify({
    file,
    errors: report.issues.numErrors,
    warnings: report.issues.numWarnings,
    infos: report.issues.numInfos,
    hints: report.issues.numHints,
    codes,
  }));
}
