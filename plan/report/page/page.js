// The start of it all: what the page shows at first, and what follows a click, a key, a printer.

document.title = visible(fleet.title);
setText(document, "#title", fleet.title);
setText(document, "#about", "Written " + clock(fleet.generated, 0) + " UTC");
setText(document, "#program", "tarnhwplan " + fleet.version);
sortBy(document.querySelector("[data-key=name]"));
filter();
showTogether();

byId("filter-text").addEventListener("input", filter);
byId("filter-state").addEventListener("change", filter);
byId("open-all").addEventListener("click", openAll);
document.querySelectorAll("#servers thead button").forEach((button) =>
    button.addEventListener("click", () => sortBy(button)));
addEventListener("hashchange", follow);
addEventListener("beforeprint", beforePrint);
addEventListener("afterprint", afterPrint);
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", repaint);

// One server needs no table of servers, and its name stands once.
if (rows.length === 1) {
    document.body.classList.add("single");
    byId("all").hidden = true;
    const section = open(0);
    section.querySelector("h2").classList.toggle("unseen", fleet.title === fleet.servers[0].name);
    fillWhenRead(section);
}
follow();
