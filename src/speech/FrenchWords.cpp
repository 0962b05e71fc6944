#include "speech/Vocabulary.h"

namespace kestrant::speech {

const std::string_view frenchWords = R"(
number 0: zero, un|une, deux, trois, quatre, cinq, six, sept, huit, neuf, dix, onze, douze, treize, quatorze, quinze, seize, dix sept, dix huit, dix neuf, vingt, vingt et un|vingt et une
number 30: trente
number 40: quarante
number 50: cinquante
number 60: soixante
number 80: quatre vingt|quatre vingts
number 3: quelques
number 10: une dizaine de
number 15: une quinzaine de
number 20: une vingtaine de
ordinal 1: premier|premiere|premiers|premieres, deuxieme|second|seconde, troisieme, quatrieme, cinquieme
ordinalEnding 0: er|ers|ere|re|e|eme|ieme|nd|nde
fraction 1: un quart|quart, demi|une demi|demie|une demie, trois quarts
fractionMark 1: et quart|et un quart, et demi|et demie, et trois quarts|trois quarts
weekday 1: lundi, mardi, mercredi, jeudi, vendredi, samedi, dimanche
weekday~ 1: lun, mar, mer, jeu, ven, sam, dim
weekdays 1: lundis, mardis, mercredis, jeudis, vendredis, samedis, dimanches
month 1: janvier|janv, fevrier|fev|fevr, _, avril|avr, mai, juin, juillet|juil, aout, septembre, octobre, novembre, decembre|dec
month~ 3: mars|mar, _, _, _, _, _, sept
genitive 0: de|du|d|de la|de l
otherWord 0: mer|dim
otherWord 1: mar|jeu
otherWord 2: sam
company 0: avec
priorityName 0: priorite|prio
negation 0: pas|jamais|non
work 0: lire|relire|regarder|revoir|ecouter|voir|jouer a|jouer
per 0: par
on 0: _
timeOf 0: heure de|heure d|heure locale de|a l heure de
allDay 0: toute la journee|la journee entiere|journee entiere
unit 0: minute|minutes|min|mn, heure|heures|h, jour|jours, semaine|semaines|sem, quinzaine, mois, an|ans|annee|annees, week end|week ends|weekend|weekends|we, trimestre|trimestres, jour ouvre|jours ouvres|jour ouvrable|jours ouvrables
unit~ 2: j
part 0: matin|matins|matinee|mat, apres midi|apres midis|aprem|aprems, soir|soirs|soiree, nuit|nuits
clock 720: midi
clock 540: a la premiere heure|premiere heure|des la premiere heure
clock 1440: minuit
dayEnd 1080: fin de journee|la fin de la journee|fin de la journee|la fin de journee
oclock 0: heures pile|pile|h pile
minus 0: moins
today 0: aujourd hui|aujourdhui|auj|ajd, demain, apres demain|surlendemain
today -1: hier|avant hier
todayPart 0: ce matin|cette matinee, cet aprem|cet apres midi|cette apres midi|cette aprem, ce soir|cette soiree, cette nuit
todayPart 4: ce midi
this 0: ce|cet|cette
coming 0: qui vient|a venir|qui arrive
next 0: prochain|prochaine|prochains|prochaines|suivant|suivante
afterNext 0: d apres
former 0: dernier|derniere|passe|passee|derniers|dernieres|precedent|precedente
last 0: dernier|derniere|derniers|dernieres
ago 0: il y a|y a
begin 0: debut|debut de|debut du|debut de la|debut d|le debut de|le debut du|au debut de|au debut du|au debut de la|au debut d|debut de l|au debut de l|en debut de|en debut d
begin 1: tot|de bonne heure
middle 0: mi|milieu|milieu de|milieu du|milieu de la|au milieu de|au milieu du|le milieu du|au milieu de la|en milieu de|en milieu d
end 0: fin|fin de|fin du|fin de la|fin d|fin de l|la fin de|la fin du|la fin de la|la fin d|la fin de l|a la fin de|a la fin du|a la fin de la|a la fin de l|a la fin d|en fin de|en fin d|vers la fin du
end 1: tard
in 0: dans|sous|d ici|dans les|dans le|dans la|d ici a|au bout de|dans environ|d ici environ|dans a peu pres|dans moins de|dans moins d|dans un peu moins de|d ici moins de
fromNow 0: plus tard|a partir de maintenant|a compter d aujourd hui|a compter de maintenant|a partir d aujourd hui
before 0: avant
after 0: apres|a partir de
eve 0: la veille de|la veille du|veille de|la veille d
morrow 0: le lendemain de|le lendemain du
weekOut 7: en huit|en 8
weekOut 14: en quinze|en 15
lead T: a|pour|des|apres|a partir de|pas avant
lead TC: vers|aux environs de|aux alentours de|a environ|environ|sur les|vers les|sur le coup de|aux alentours d|aux environs d
lead D: plus tard|a partir de|au|sur|a compter de|a|pour
lead DTSP: pour|des
lead DTSPB: avant|d ici|d ici a|au plus tard|au plus tard a|echeance|date limite|d ici l|au plus tard d ici|max|avant la|d ici la
lead DC: ce|dans la journee de|dans la journee du|courant
lead D: les
lead DA: le|pour le|des le|a partir du|a compter du|au|en date du
lead DTSPBA: avant le|date limite le|d ici le|au plus tard le|d ici au|echeance le
lead S: a la|pendant le|pendant la|durant le|durant la|au cours du|de la|du|de l|de|d|en|au mois de|au mois d|courant|au|sur|pour le mois de|pour la|la|le|l|en plein mois de|dans le courant de|dans le courant du
lead P: ds la|dans la|dans l|en|au|en fin de|au cours de la|dans le courant de l|du|de l|de la|pendant la|pour le|pour la
from 0: de|du|entre|entre le|d
of 0: de|du|d|de la|de l|des|du mois de|du mois d|au
the 0: le|la|les|l
and 0: et|puis
or 0: ou
range 0: a|au|jusqu a|jusqu au|jusqu a la|jusqu|aux
until 0: jusqu a|jusqu au|jusqu en|jusqu a la|jusque
duration 0: pendant|durant|pour|d une duree de|duree
hedge 0: vers|a peu pres|exactement
hedge 1: environ|pile|precises|precise|dans la journee|max|maximum|dernier delai|au plus tard
every 0: chaque|tous les|toutes les|tout les|toute les|chacun des
outOf 0: sur
other 2: deux
frequency 3: quotidiennement|chaque jour|tous les jours, hebdomadairement, _, mensuellement, annuellement|tous les ans, _, _, _, matin et soir|le matin et le soir
frequency~ 3: quotidien|quotidienne, hebdomadaire|hebdo, bimensuel, mensuel|mensuelle, annuel|annuelle, _, trimestriel
workdays~ 0: jour de semaine|jour ouvre|jour ouvrable
workdays 0: en semaine|jours de semaine|jours de la semaine|jours ouvres|jours ouvrables|jours de travail
times 0: fois
once 1: une fois|1 fois, deux fois|2 fois, trois fois|3 fois
except 0: sauf|sauf le|sauf les|hormis|hormis le|excepte|excepte le|excepte les
starting 0: a partir de|a partir du|a compter du|a compter de|des|des le
feast 1: veille de noel|reveillon de noel, jour de noel, _, saint sylvestre|la saint sylvestre|reveillon du nouvel an, jour de l an|nouvel an, _, saint valentin|la saint valentin, dimanche de paques, lundi de paques
feast 11: _, ascension|l ascension|jeudi de l ascension, lundi de pentecote
feast~ 2: noel
feast~ 6: halloween
feast~ 8: paques
feast~ 14: pentecote, toussaint|la toussaint, armistice|l armistice
connector 0: s il|s ils|s elle|sauf si|contre|avec|pour|a|chez|et|dans|sur|avant|apres|vers|au|aux|car|si|des|midi|minuit|en|afin|par|via|concernant|quand|le|la|les|mon|ma|mes|notre|nos
forbidsDay 0: depuis|vivement|jusqu a|jusqu au|dernier|derniere|premier|premiere|deuxieme|troisieme|quatrieme|apres|du|de|d|des|chaque|tous les|toutes les|tous|toutes|hier|que|et|ou|un|une|les|mon|ton|son
verse 0: jean|matthieu|marc|luc|psaume|psaumes|romains
forbidsClock 0: pendant|durant|pour|de|en|toutes|tous|chapitre|verset|salle|page|score|cuire|dure|ouvert|les|que|etape|partie|episode|saison|tome|numero|taille|acte|scene|exercice|question|article
determiner 0: le|la|les|l|un|une|des|mon|ma|mes|ton|ta|tes|son|sa|ses|notre|nos|votre|leur|leurs|ce|cet|cette|du
name 0: midi libre|vendredi saint|vendredi 13|jeudi noir|mardi gras|lundi noir|dimanche soir film|clavier midi|demain des l aube|jour de fete|en trois mots|six nations|quatre saisons|fin de partie|fin de vie|fin de semaine de
priorityWord 0: haute|elevee|maximale|urgente|forte, normale|moyenne, basse|faible|minimale
flag 0: drapeau|signale|marque
alert 0: alerte|rappel|alarme|me rappeler|rappelle moi|rappelez moi|prevenir|avec alerte|avec rappel|avec une alerte|avec un rappel|notification
place 0: _, a|au|aux|en, chez
dayBefore 0: la veille|la veille au soir
)";

}  // namespace kestrant::speech
