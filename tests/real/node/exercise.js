// Asks the service as a user interface would, with the documented example, and prints what came back.
const { ask } = require("./client.js");

const status = () => ask('{"op":"status"}');

// How often each reply came.
function tally(replies) {
  const counts = {};
  for (const reply of replies) counts[reply] = (counts[reply] || 0) + 1;
  return JSON.stringify(counts);
}

async function inARow(count) {
  const replies = [];
  for (let i = 0; i < count; i++) replies.push(await status());
  return replies;
}

async function main() {
  console.log(await status());
  console.log(await ask('{"op":"connect","node":"東京 \\"1\\""}'));
  console.log(await status());
  console.log(tally(await inARow(1000)));
  console.log(tally((await Promise.all([inARow(100), inARow(100)])).flat()));
  console.log(await ask('{"op":"disconnect"}'));
  console.log(await ask('{"op":"no such"}'));
}

main().catch((error) => {
  console.error(error);
  process.exit(1);
});
