#include "server/summaries/WordLists.h"

#include <string>
#include <unordered_set>

namespace talvenor::server {

namespace {

using Words = std::unordered_set<std::string_view>;

/// The words of a text that lives as long as the program.
Words split(std::string_view text)
{
    Words words;
    std::size_t begin = 0;
    while ((begin = text.find_first_not_of(" \n", begin)) != std::string_view::npos) {
        const std::size_t end = text.find_first_of(" \n", begin);
        words.insert(text.substr(begin, end - begin));
        begin = end == std::string_view::npos ? text.size() : end;
    }
    return words;
}

constexpr std::string_view stopWords = R"(
a about above after again against ah all almost also although always am an and another any anything are
aren't around as at away back be because been before being below between both but by came can can't cannot
come could couldn't did didn't do does doesn't doing don't done down during each eh either else enough er
even ever every everything few for from further gave get gets getting give given go goes going gone gonna got
had hadn't has hasn't have haven't having he he'd he'll he's hello her here here's hers herself hey hi him
himself his hm hmm how how's however i i'd i'll i'm i've if in into is isn't it it'd it'll it's its itself
just kind know last least less let let's like little look lot made make many may maybe me mean might mine
more most much must my myself never next no nobody nor not nothing now of off oh ok okay on once one only or
other others our ours ourselves out over own perhaps please pretty put quite rather really right said same
saw say says see seem seemed seems shall she she'd she'll she's should shouldn't since so some somebody
someone something sometimes soon sort still stuff such sure take tell than thank thanks that that'll that's
the their theirs them themselves then there there's these they they'd they'll they're they've thing things
think this those though three through to today together too took two uh uhm um under until up upon us use
very wanna want wants was wasn't way we we'd we'll we're we've well went were weren't what what's whatever
when where where's whether which while who who's whole whom whose why will with within without won't would
wouldn't yeah yes yet you you'd you'll you're you've your yours yourself yourselves
ab aber ach ähm äh alle allem allen aller alles als also am an ander andere anderem anderen anderer anderes
auch auf aus bei beim bin bis bist bitte da dabei dadurch dafür dagegen daher dahin damit danach dann daran
darauf daraus darf darin darüber darum das dass davon dazu dein deine deinem deinen deiner dem den denen denn
dennoch der deren des deshalb dessen dich die dies diese diesem diesen dieser dieses dir doch dort drei du
durch dürfen ebenso ein eine einem einen einer eines einfach einige einigen einmal eins er es etwa etwas euch
euer eure eurem euren für ganz gar gegen gehabt gehen geht genau gerade gern gerne gesagt gewesen gibt ging
gleich gut habe haben hallo halt hast hat hatte hatten hätte hätten heißt her heute hier hin hinter ich ihm
ihn ihnen ihr ihre ihrem ihren ihrer im immer in ins irgendwie ist ja jede jedem jeden jeder jedes jedoch jene
jetzt kann kannst kein keine keinem keinen keiner komm kommen kommt können könnte könnten könnt lassen los mach
machen macht mal man manche manchmal mehr mein meine meinem meinen meiner mich mir mit möchte möchten mögen
möglich moment muss müssen müsste na nach nachdem nächste nämlich naja ne nein neben nicht nichts nie noch
nun nur ob oben oder ohne okay schon sehr sei seid sein seine seinem seinen seiner seit selbst sich sie sind
so sogar solche soll sollen sollte sollten sondern sonst soweit sowie trotzdem über um und uns unser unsere
unserem unseren unter viel viele vielen vielleicht vom von vor war waren warst warum was weg weil weiß
weiter welche welchem welchen welcher welches wenig wenn wer werde werden werdet weshalb wie wieder wieso wir
wird wirklich wirst wo wohl wollen wollte worden wurde wurden würde würden zu zum zur zwar zwei zwischen
)";

constexpr std::string_view givenNames = R"(
aaron abby abigail adam adrian ahmed aidan aisha alan albert alejandro aleksandra alex alexa alexander
alexandra alexia alexis alfred ali alice alicia alina alison alistair allison alma alyssa amanda amber amelia
amelie amir amy ana anastasia andre andrea andreas andrew andy angela angelika angelina anita anja anke ann
anna anne annegret anneke annelie annette annika anthony antje anton antonia antonio anya april archie ariana
arjun armin arne arno arnold arthur arvid ashley astrid audrey aurora austin ava axel ayse barbara barry
bastian beate beatrice beatrix becky ben benedict benedikt benjamin benno bernadette bernard bernd bernhard
bert bertha beth bettina betty beverly bianca bill billy birgit birte bjarne björn blake bob bobby boris brad
bradley brandon brenda brendan brian bridget brigitte brittany brooke bruce bruno bryan caitlin callum calvin
cameron camilla camille candice carina carl carla carlos carmen carol carolin carolina caroline carolyn
carsten cassandra catherine cathy cecilia celine chandler charles charlie charlotte chelsea cheryl chloe chris
christa christel christian christiane christin christina christine christoph christopher cindy claire clara
clarissa clark claudia claus clemens clive cody colin conny connor conrad constanze cora corinna cornelia
craig curtis cynthia daisy dale damian dan dana daniel daniela danielle danny daphne darius darren dave david
dean deborah debbie denis denise dennis derek detlef diana diane dieter dietmar dietrich dirk dmitri
dominic dominik don donald donna dora doreen doris dorothea dorothee dorothy doug douglas duncan dustin dylan
earl eberhard eddie edgar edith edmund eduard edward edwin egon eileen elaine elena eleanor eli elias elif
elisa elisabeth elizabeth elke ella ellen elliot elsa elvira emanuel emily emil emilia emma emmanuel emre enrico
eric erica erich erik erika erin erich ernest ernst erwin esther ethan eugen eugene eva evan eve evelyn
fabian fabienne fatima felicia felicitas felix ferdinand fernando finn fiona florence florian frances francesca
francis franciska frank franka franz franziska fred freddie frederick frederik frieda friederike friedrich
frida fritz gabi gabriel gabriela gabriele gareth gary gavin geoff geoffrey george georg georgia gerald gerard
gerd gerhard gerrit gerta gertrud gilbert gina gisela giulia gloria gordon gottfried grace graham greg gregor
gregory greta gudrun guido günter günther gustav guy hagen hailey hakan hank hanna hannah hannelore hannes hans
harald harold harriet harry hartmut hasan hassan hazel heather hector hedwig heidi heike heiko heiner heinrich
heinz helen helena helene helga helge helmut hendrik henning henri henrik henriette henry herbert hermann
hilary hilda hilde holger holly horst howard hubert hugh hugo ian ibrahim ida igor ilona ilse imke ina ines
inga inge ingeborg ingo ingrid irene irina iris irma isaac isabel isabell isabella isabelle isla ismail ivan
ivy jack jackie jackson jacob jacqueline jakob jake james jamie jan jana jane janet janice janina janine jannik
jannis jared jasmin jasmine jason jay jean jeff jeffrey jenna jennifer jenny jens jeremy jerome jerry jesse
jessica jessie jill jim jimmy joachim joan joanna joanne jochen joe joel joerg johan johann johanna johannes
john johnny jon jonah jonas jonathan jordan jörg jörn jose josef joseph josephine josh joshua joyce juan
judith judy julia julian juliana juliane julie julien juliet julius jürgen justin justine justus jutta
kai karen karin karina karl karla karolin karoline karsten kasimir kate katharina katherine kathleen kathrin
kathy katie katja katrin kay keith kelly ken kenneth kerstin kevin khalid kilian kim kimberly kirsten kirstin
klara klaudia klaus knut konrad konstantin kristin kristina kristof kurt kyle kylie lara larissa larry lars
laura lauren lea leah leander lee leif lena lennart lennox leo leon leonard leonhard leonie leonora leroy leslie
levi levin lewis liam lilian lillian lilly lily lina linda lindsay lisa liz lola lorena lorenz lorraine lothar
lotta lotte lou louis louisa louise luca lucas lucia lucie lucy ludger ludwig luis luisa luise luka lukas luke
lutz lydia lynn mabel maddie madeleine madison magda magdalena maggie maike maja malcolm malte mandy manfred
manuel manuela mara marc marcel marco marcus margaret margarete margarita margit margot margret maria marian
marianne marie mariella marika marina mario marion marisa marius markus marlene marlon marta martha martin martina
marvin mary maryam matilda mats matt matteo matthew matthias maureen maurice mauro max maximilian maya mehmet
melanie melinda melissa mercedes meredith mia micha michael michaela michele michelle miguel mika mike milan
milena milo mina mira miranda miriam mirjam mirko mitchell mohamed mohammed moira molly mona monica monika
monique morgan moritz muhammad murat mustafa myriam nadia nadine nadja nancy naomi natalia natalie natasha
nathan nathaniel neil nele nelly nelson nick nicholas nick nico nicola nicolas nicole niels niklas nikolas
nikolaus nils nina noah noel noemi nora norbert norma norman oskar olaf olga oliver olivia omar oscar otto owen
pamela pascal pat patricia patrick patty paul paula paulina pauline pedro peggy penelope penny percy perry
peter petra phil philip philipp phillip phoebe pia pierre priya rachel rafael rahel rainer ralf ralph ramona
raphael raphaela ray raymond rebecca regina regine reiner reinhard reinhold renate rene rhys ricarda ricardo
richard rick ricky rita robert roberta roberto robin rocco rodney roger roland rolf roman romy ron ronald
ronja ronny rosa rosalie rosemarie rosemary rosie ross roswitha roxana roy ruben rudi rudolf rupert russell
ruth ryan sabine sabrina sally sam samantha samira sammy samuel sandra sandro sandy sara sarah sascha saskia
scarlett scott sean sebastian selina selma serena sergej sergio seth severin shannon sharon shaun shawn sheila
shirley sibylle sidney siegfried sigrid silas silke silvia silvio simon simona simone sina sofia sofie solveig
sonia sonja sophia sophie spencer stacey stan stanley stefan stefanie steffen stella stephan stephanie stephen
steve steven stewart stuart sue susan susanna susanne susi suzanne sven svenja sybille sylvester sylvia
sylvie tamara tammy tanja tanya tara tatjana ted teresa terry tessa theo theodor theodore theresa therese thea
thiago thies thomas thorben thorsten tiffany til tillmann tilman tim timo timothy tina tobias toby todd
tom tommy toni tony torben torsten tracy trevor trixi trudy tyler udo ulf uli ulla ulli ulrich ulrike ursula
ute uwe valentin valentina valerie vanessa vera verena veronica veronika veronique vicky victor victoria
viktor viktoria vincent vincenz viola violet vivian vivien volker volkmar walter waltraud wanda wayne wendy
werner whitney wiebke wilhelm wilfried willi william willow willy winfried wolf wolfgang wolfram xaver
xavier yannick yannik yara yasemin yasmin yolanda yusuf yvette yvonne zach zachary zara zoe
)";

constexpr std::string_view neverNames = R"(
able absolutely actually afraid agile all already american annual anybody anyone anyway april august awesome
bad basically behind better big bit both boss brilliant british business busy call called case cheers chief
clear cold coming company completely confident correct crazy critical currently customer customers dear
december definitely developer developers different difficult director doctor done early easy end engineer
english europe european everybody everyone exactly excellent excited exciting extremely fair family fantastic
fast february finally fine finished first five folks four french friday friends fully fun german germany glad
god gone good goodness great guilty guys happy hard heavens hearing helpful here hoping how huge human hungry
important incredible interested interesting january joining july june ladies late lately leaving listening
literally long looking lost love lucky madam manager march meeting mister mixed monday morning mostly mr mrs
ms my necessary new nice nobody normal not november number obviously october officer old only open our part
people perfect planning please possible presenting probably problem project proud question quick quickly ready
real responsible retired running sad same saturday saying second september serious session sharing short sick
simple simply sir six slow small somebody someone somewhere sorry speaking special standard still strange
strong stuck stupid super sunday supposed sure surprised talking team ten terrible test testing than thinking
third thrilled thursday time tired today tomorrow totally tough trouble true trying tuesday typical
unfortunately urgent used useful using usual usually version wednesday week welcome where wonderful working
worried worse worst wrong yesterday young
abend abends abteilung alleine allerdings alles alter anfang ansprechpartner april aufgabe aufgaben august
außerdem bald begeistert bereit berater bericht besonders besser betreut büro chef chefin dabei dagegen
dankbar danke dann darum dezember dienstag dienstags direkt doktor donnerstag draußen dran durch ehrlich
einverstanden einzige ende endlich entsetzt entwickler entwicklerin erfreut ersten erst februar fertig
firma frage frau freitag freund freunde freundin froh früh furchtbar geschäftsführer geschäftsführerin
gespannt gestern glücklich gott großartig gut gute guten halb herr herren herrn heute hierher interessant
januar jederzeit jemand juli juni kein klar kollege kollegen kollegin krank kunde kunden kurz lange langsam
leider leiter leiterin leute liebe lieber mai manager märz maximal mitarbeiter mitarbeiterin mittwoch montag
morgen müde nachmittag natürlich neu neue neuer neugierig niemand november oktober platz praktikant
praktikantin problem projekt projektleiter projektleiterin raus recht richtig ruhe ruhig samstag schluss
schön schönen schöne schnell schuld september sicher sonntag später spät spezialist stolz super tag team
teil termin thema toll total traurig typisch überall überhaupt überrascht überzeugt übrigens unser
unterwegs verantwortlich verwirrt vielmals vormittag vorbei vorne wichtig wieder willkommen woche zeit
zufrieden zuhause zurück zuständig
)";

} // namespace

bool isStopWord(std::string_view word)
{
    static const Words words = split(stopWords);
    return words.contains(word) || word.find_first_not_of("0123456789") == std::string_view::npos;
}

bool isGivenName(std::string_view word)
{
    static const Words words = split(givenNames);
    return words.contains(word);
}

bool isNeverName(std::string_view word)
{
    static const Words words = split(neverNames);
    return words.contains(word);
}

} // namespace talvenor::server
