// The page around conformance.js: asks for the account and shows the results as they come.
// index.html?run starts at once with what the fields hold.

(function () {
    "use strict";

    /** @param {string} id @returns {any} */
    function byId(id) { return document.getElementById(id); }

    /** @param {string} outcome @param {(string | number)[]} texts */
    function addRow(outcome, texts) {
        var row = document.createElement("tr");
        row.className = outcome;
        texts.forEach(function (text) {
            var cell = document.createElement("td");
            cell.appendChild(document.createTextNode(String(text)));
            row.appendChild(cell);
        });
        byId("results").appendChild(row);
    }

    /** @param {string} outcome @param {string} text */
    function summarise(outcome, text) {
        var summary = byId("summary");
        summary.className = outcome;
        summary.textContent = text;
    }

    function run() {
        byId("run").disabled = true;
        var failed = 0;
        try {
            conformance.start({
                user: byId("user").value,
                password: byId("password").value,
                track: byId("track").value
            }, function (result) {
                failed += result.ok ? 0 : 1;
                summarise("running", result.number + " checks, " + failed + " failed, running ...");
                if (result.skip) {
                    addRow("skipped", [result.number, "skipped", result.what, result.skip]);
                } else if (result.ok) {
                    addRow("passed", [result.number, "ok", result.what, ""]);
                } else {
                    addRow("failed", [result.number, "NOT OK", result.what,
                        "expected " + result.expected + ", got " + result.got]);
                }
            }, function (counts) {
                document.documentElement.setAttribute("data-ready", "true");
                summarise(counts.failed > 0 ? "failed" : "passed", counts.passed + " passed, " +
                    counts.failed + " failed, " + counts.skipped + " skipped");
            });
            byId("setting").textContent = conformance.setting();
        } catch (error) {
            summarise("failed", String(error));
        }
    }

    byId("user").value = conformance.defaults.user;
    byId("password").value = conformance.defaults.password;
    byId("quiet").onclick = function () {
        byId("table").className = byId("quiet").checked ? "quiet" : "";
    };
    byId("form").onsubmit = function () {
        run();
        return false;
    };
    if (location.search === "?run") {
        // For what makes pictures of pages: there is more to come.
        document.documentElement.setAttribute("data-ready", "false");
        run();
    }
}());
