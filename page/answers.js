// Requests to the server. Of what is drawn one request is under way, and the newest waits; a full picture gives way to
// the next draft at once, for the server ends what a newer request of the same lane takes the place of.
const page = Array.from(crypto.getRandomValues(new Uint8Array(9)), (b) => b.toString(16).padStart(2, "0")).join("");

// The answer; throws where there is none. `lane` tells requests apart that do not take one another's place.
export async function ask(lane, request, signal) {
  const answer = await fetch("answer", {
    method: "POST", signal, body: JSON.stringify(request),
    headers: {"Content-Type": "application/json", "X-Velquor-Page": `${page}-${lane}`},
  });
  const text = await answer.text();
  try {
    return {status: answer.status, answer: JSON.parse(text)};
  } catch {
    throw new Error(`the server answered ${answer.status} without words`);
  }
}

const REST = 220, AGAIN = 1500;  // milliseconds without a change before the full picture, and before asking again

// request(view) makes a request of the newest state; shown(answer, view, since) and wrong(error) take what comes.
export function follow({request, shown, wrong, working}) {
  let under_way = null, waiting = false, rest = 0, since = 0, newest = 0;
  async function send(view) {
    const mine = {view, number: newest, since, stop: new AbortController()};
    under_way = mine;
    working(true);
    let outcome = null, lost = null;
    try {
      outcome = await ask("view", request(view), mine.stop.signal);
    } catch (error) {
      lost = error;
    }
    if (under_way !== mine) return;  // another took its place
    under_way = null;
    if (waiting) {
      waiting = false;
      // What was drawn meanwhile is shown, unless it is wrong: the newest will tell.
      if (outcome && !outcome.answer.error) shown(outcome.answer, view, mine.since, true);
      since = next_since;
      return send("draft");
    }
    working(false);
    if (lost || outcome.status === 503 || outcome.status === 429) {
      wrong({kind: "lost", at: "", message: lost ? "the server does not answer" : outcome.answer.error?.message ?? "the server is busy", remedy: "it is asked again"});
      rest = setTimeout(() => send(view), AGAIN);
      return;
    }
    if (outcome.status === 409) return send(view);  // one that was sent before it came after it
    if (outcome.answer.error) return wrong(outcome.answer.error);
    shown(outcome.answer, view, mine.since, false);
    if (view === "draft") rest = setTimeout(() => send("full"), Math.max(0, REST - (performance.now() - changed_at)));
  }
  let changed_at = 0, next_since = 0;
  return function changed() {
    changed_at = performance.now();
    newest += 1;
    clearTimeout(rest);
    if (under_way && under_way.view === "draft") {
      if (!waiting) next_since = changed_at;
      waiting = true;
      return;
    }
    if (under_way) {
      const old = under_way;
      under_way = null;
      old.stop.abort();
    }
    since = changed_at;
    send("draft");
  };
}
