// What scripts of pages know as Quirnote: see "Pages" in docs/bundles.md. Runs in every page before
// its own scripts. Each call is a request to the program, which answers those of pages that it
// serves itself.
(function () {
  "use strict";
  if (window.Quirnote) return;
  const isOurs = location.protocol === "qn-internal:" || location.protocol === "qn-file:";
  const base = location.protocol === "qn-file:" ? "qn-file:/.quirnote/" : "qn-internal://local/.quirnote/";
  const pieceOfInput = 100000; // units that one request can hold

  function text(value) {
    // A lone half of a character can't be sent.
    return encodeURIComponent(String(value).replace(
      /[\uD800-\uDBFF](?![\uDC00-\uDFFF])|(?<![\uD800-\uDBFF])[\uDC00-\uDFFF]/g, "\uFFFD"));
  }

  function address(operation, fields) {
    return base + operation + "?" +
      Object.keys(fields).map(name => name + "=" + text(fields[name])).join("&");
  }

  // Waits for the answer; null if there is none.
  function ask(operation, fields) {
    const request = new XMLHttpRequest();
    try {
      request.open("GET", address(operation, fields), false);
      request.send();
      return JSON.parse(request.responseText);
    } catch (error) {
      return null;
    }
  }

  // Gives the answer, or null, to the function.
  function askLater(operation, fields, answered) {
    const request = new XMLHttpRequest();
    request.open("GET", address(operation, fields));
    request.onloadend = () => {
      let answer = null;
      try { answer = JSON.parse(request.responseText); } catch (error) {}
      answered(answer);
    };
    request.send();
  }

  class Command {
    constructor(id) {
      this.outputString = "";
      this.errorString = "";
      this.status = 0;
      this.onreadoutput = null;
      this.onreaderror = null;
      Object.defineProperty(this, "_", { value: { id: id, input: [], writes: false } });
    }
    write(input) {
      const all = String(input);
      for (let at = 0; at < all.length;) {
        let end = Math.min(at + pieceOfInput, all.length);
        if (end < all.length && /[\uD800-\uDBFF]/.test(all[end - 1])) ++end;
        this._.input.push(all.slice(at, end));
        at = end;
      }
      send(this);
    }
    close() { this._.closes = true; send(this); }
    cancel() { askLater("cancel", { id: this._.id }, () => {}); }
  }

  // One piece of input after the other, as fast as the command reads.
  function send(command) {
    const hidden = command._;
    if (hidden.writes) return;
    if (hidden.input.length) {
      hidden.writes = true;
      askLater("write", { id: hidden.id, text: hidden.input.shift() }, () => {
        hidden.writes = false;
        send(command);
      });
    } else if (hidden.closes) {
      hidden.closes = false;
      askLater("close", { id: hidden.id }, () => {});
    }
  }

  function take(command, text, handler, store) {
    if (!text) return;
    if (typeof command[handler] === "function") command[handler](text);
    else command[store] += text;
  }

  function follow(command, ended) {
    askLater("next", { id: command._.id }, answer => {
      try {
        take(command, answer && answer.output, "onreadoutput", "outputString");
        take(command, answer && answer.error, "onreaderror", "errorString");
      } finally {
        if (answer && !answer.ended) {
          follow(command, ended);
        } else {
          command.status = answer ? answer.status : -1;
          ended(command);
        }
      }
    });
  }

  function refuse() {
    console.error("SECURITY WARNING: Quirnote.system() can only be used on dynamically loaded or " +
      "locally hosted pages.");
    console.error("Offending page was loaded from " + location.href + " (" +
      location.protocol.replace(":", "") + ")");
  }

  const Quirnote = {
    system(command, handler) {
      if (!isOurs) return refuse();
      if (typeof handler === "function") {
        const started = ask("start", { text: command });
        if (!started) return undefined;
        const running = new Command(started.id);
        follow(running, handler);
        return running;
      }
      const answer = ask("system", { text: command });
      if (!answer) return undefined;
      const ended = new Command(0);
      ended.outputString = answer.output;
      ended.errorString = answer.error;
      ended.status = answer.status;
      return ended;
    },
    log(message) { if (isOurs) ask("log", { text: message }); else console.log(message); },
    get isBusy() { const answer = isOurs && ask("busy", {}); return answer ? answer.busy : false; },
    set isBusy(busy) { if (isOurs) ask("busy", { value: Boolean(busy) }); }
  };
  Object.defineProperty(window, "Quirnote", { value: Object.freeze(Quirnote), enumerable: true });
  // These reach other hosts by roads of their own.
  for (const name of ["RTCPeerConnection", "webkitRTCPeerConnection", "WebTransport"])
    delete window[name];
})();
